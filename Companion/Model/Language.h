#pragma once

#include <string>

// The language of the companion's own texts: one for the process. Main thread.
namespace companion {

/// The settings key of the TV's menu language, such as "de_DE.UTF-8".
inline constexpr char kLanguageKey[] = "db/menu_widget/language";

/// Reads that setting and speaks its language from now on. Without the setting, or for a language that
/// there are no texts in, the environment decides, and then it is English. Times follow the language where
/// the system knows its customs.
void FollowMenuLanguage();

/// A text of the companion in that language; valid until the language changes.
const char* Translated(const char* english);

/// The same where the words depend on a number.
const char* Translated(const char* one, const char* several, unsigned long number);

/// Whether that language is written from right to left.
bool IsRightToLeft();

/// A time of day without seconds, as the language writes it: "18:30", "6:30 PM". The end of the day is midnight.
std::string TimeOfDay(int second);

} // namespace companion
