#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Diagnostics/Lint/Lint.h"

/// A document that the linter has nothing to say about.
inline constexpr char kGoodDocument[] = R"(<rsp state='ok'>
  <schedule start_time='09:00:00' end_time='18:00:00'>
    <item id='A1' order='1'><name>intro</name><size>1048576</size><format>mp4</format></item>
  </schedule>
</rsp>
)";

/// The good document with its first `what` replaced.
std::string GoodDocumentWith(const std::string& what, const std::string& replacement);

/// The options of the documentation's examples: the day is 2026-06-01.
lint::Options TestOptions();

/// All findings as "line:column-endColumn rule".
std::vector<std::string> PlacesIn(std::string_view document);

/// One rule's section of the documentation.
struct RuleSection {
    std::string name;
    std::string severity;
    std::string bad;
    std::string output; ///< what the linter prints for the bad document
    std::string good;   ///< the page's clean document where the section shows none
};

std::vector<RuleSection> RuleSections();
