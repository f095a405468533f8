#include "Companion/Model/Language.h"

#include <clocale>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <system_error>

#include <langinfo.h>
#include <libintl.h>
#include <vconf.h>

/// Declared by programs that change LANGUAGE, as gettext's manual says.
extern "C" int _nl_msg_cat_cntr; // NOLINT(bugprone-reserved-identifier)

namespace companion {

namespace {

constexpr char kDomain[] = "vqmcompanion";

/// The customs of the language, from what the system knows of it.
struct LocaleDeleter {
    void operator()(locale_t locale) const { freelocale(locale); }
};
using TimeLocale = std::unique_ptr<std::remove_pointer_t<locale_t>, LocaleDeleter>;

TimeLocale& TheTimeLocale()
{
    static TimeLocale locale;
    return locale;
}

std::string MenuLanguage()
{
    const std::unique_ptr<char, decltype(&std::free)> setting(vconf_get_str(kLanguageKey), std::free);
    return setting != nullptr ? setting.get() : "";
}

/// What the environment said at the start, before we wrote into it.
const std::string& EnvironmentsLanguage()
{
    static const std::string language = [] {
        for (const char* const name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
            const char* const value = std::getenv(name);
            if (value != nullptr && *value != '\0') {
                return std::string(value);
            }
        }
        return std::string();
    }();
    return language;
}

/// Beside the program, so that an installation can be moved as a whole.
std::string CatalogueFolder()
{
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    return (program.parent_path() / VQM_LOCALE_FOLDER).lexically_normal().string();
}

/// Once, before there are threads: setlocale is not for programs that have them. For "C" gettext translates
/// nothing, and newer C libraries take "C.UTF-8" for the same; for any other locale LANGUAGE decides, whether
/// or not the system has that language's own.
void LeaveTheCLocale()
{
    setlocale(LC_MESSAGES, "");
    setlocale(LC_TIME, "");
    const std::string messages = setlocale(LC_MESSAGES, nullptr);
    if (messages != "C" && messages != "POSIX") {
        return;
    }
    for (const char* const name : {"en_US.UTF-8", "C.UTF-8", "C.utf8"}) {
        if (setlocale(LC_MESSAGES, name) != nullptr) {
            return;
        }
    }
}

/// Customs with a clock of twelve hours write one of these.
bool HasTwelveHours(const std::string& format)
{
    return format.find("%r") != std::string::npos || format.find("%I") != std::string::npos ||
           format.find("%l") != std::string::npos;
}

} // namespace

void FollowMenuLanguage()
{
    static const bool once = (EnvironmentsLanguage(), LeaveTheCLocale(), true);
    static_cast<void>(once);
    const std::string setting = MenuLanguage();
    const std::string& language = setting.empty() ? EnvironmentsLanguage() : setting;
    // From the second time on this replaces a value where it stands, which other threads may read.
    setenv("LANGUAGE", language.empty() ? "C" : language.c_str(), 1);
    TheTimeLocale().reset(newlocale(LC_TIME_MASK, setting.c_str(), nullptr));
    ++_nl_msg_cat_cntr; // gettext then forgets what it has found for the language before
    bindtextdomain(kDomain, CatalogueFolder().c_str());
    bind_textdomain_codeset(kDomain, "UTF-8");
}

const char* Translated(const char* english)
{
    return dgettext(kDomain, english);
}

const char* Translated(const char* one, const char* several, unsigned long number)
{
    return dngettext(kDomain, one, several, number);
}

bool IsRightToLeft()
{
    // Translators of a language that is written from right to left answer "direction:right-to-left".
    return std::string(Translated("direction:left-to-right")) == "direction:right-to-left";
}

std::string TimeOfDay(int second)
{
    const locale_t locale = TheTimeLocale() != nullptr ? TheTimeLocale().get() : LC_GLOBAL_LOCALE;
    const std::string format = TheTimeLocale() != nullptr ? nl_langinfo_l(T_FMT, locale) : nl_langinfo(T_FMT);
    const bool twelveHours = HasTwelveHours(format);
    std::tm time = {};
    time.tm_hour = second / 3600;
    time.tm_min = second / 60 % 60;
    if (twelveHours) {
        time.tm_hour %= 24; // the end of the day is no later an hour than 12 AM
    }
    char text[32];
    const char* const form = twelveHours ? "%-I:%M %p" : "%H:%M";
    const std::size_t size = TheTimeLocale() != nullptr ? strftime_l(text, sizeof text, form, &time, locale)
                                                        : std::strftime(text, sizeof text, form, &time);
    return {text, size};
}

} // namespace companion
