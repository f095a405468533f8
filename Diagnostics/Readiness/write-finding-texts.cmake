# Writes the table of Docs/troubleshooting.md as a source: a program that is installed alone explains what it finds.
#
#   cmake -DPAGE=Docs/troubleshooting.md -DOUTPUT=FindingTexts.cpp -P write-finding-texts.cmake

file(READ ${PAGE} page)
set(entries "")
set(row "\n\\| `([a-z0-9-]+)` \\| ([^|\n]+) \\| ([^|\n]+) \\|")
# Row by row: the texts have semicolons, at which a list would be cut.
while(page MATCHES "${row}")
    string(APPEND entries "    {\"${CMAKE_MATCH_1}\", R\"~~~(${CMAKE_MATCH_2})~~~\", R\"~~~(${CMAKE_MATCH_3})~~~\"},\n")
    string(FIND "${page}" "${CMAKE_MATCH_0}" start)
    string(LENGTH "${CMAKE_MATCH_0}" length)
    math(EXPR rest "${start} + ${length}")
    string(SUBSTRING "${page}" ${rest} -1 page)
endwhile()
file(WRITE ${OUTPUT}
"// Written by write-finding-texts.cmake from Docs/troubleshooting.md.

#include \"Diagnostics/Readiness/FindingText.h\"

namespace readiness {

const std::vector<FindingText>& FindingTexts()
{
    static const std::vector<FindingText> texts = {
${entries}    };
    return texts;
}

} // namespace readiness
")
