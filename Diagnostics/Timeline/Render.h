#pragma once

#include <cstddef>
#include <string>

#include "Diagnostics/Calendar/Clock.h"
#include "Diagnostics/Programme/PolicyFile.h"
#include "Diagnostics/Text/JsonWriter.h"
#include "Diagnostics/Timeline/Timeline.h"

namespace timeline {

/// What a terminal can show.
struct TerminalStyle {
    std::size_t columns = 80;
    bool colour = false;
    bool blocks = false; ///< the block characters of Unicode
};

/// The day as lines of a terminal: a bar for each period, and what overlaps and what is empty in words. It
/// says the same without colours. Texts are escaped.
///
/// Of very many periods and stretches the last are only counted.
std::string RenderForTerminal(const Timeline& timeline, const TerminalStyle& style);

/// The day as an SVG document that needs nothing else: no script, no font and no style of elsewhere. It has
/// the width of a landscape A4 page, and says in colours nothing that it does not say in words or patterns.
///
/// Texts are escaped as for a terminal, and are text in the document. Of very many periods and stretches the
/// last are only counted.
std::string RenderSvg(const Timeline& timeline);

/// A document of Docs/schemas/schedule-timeline.schema.json, with everything. False when the sink was.
bool WriteJson(const Timeline& timeline, const schedule::PolicyFile& file, const schedule::Clock& clock,
               const JsonWriter::Sink& sink);

} // namespace timeline
