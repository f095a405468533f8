#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Diagnostics/Text/Edit.h"

/// Takes a text in parts; false when the reader has gone.
using TextSink = std::function<bool(std::string_view part)>;

/// Writes what the edits, which are sorted, change in a document: a unified diff with three lines of
/// context. Returns false when the sink did; without edits it writes nothing.
///
/// The diff is a text for people. Lines end where the linter's lines end and are shown as UTF-8, control
/// characters but the tab escaped. For a document in UTF-8 with "\n" at its lines' ends and without control
/// characters it is a patch too.
bool WriteUnifiedDiff(const std::string& name, std::string_view document, const std::vector<Edit>& edits,
                      const TextSink& write);
