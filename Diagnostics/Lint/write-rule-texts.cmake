# Writes the sections of Docs/lint.md as a source: a program that is installed alone explains its rules.
#
#   cmake -DPAGE=Docs/lint.md -DOUTPUT=RuleTexts.cpp -P write-rule-texts.cmake

file(READ ${PAGE} page)
set(entries "")
set(mark "\n### `")
string(FIND "${page}" "${mark}" start)
while(NOT start EQUAL -1)
    math(EXPR start "${start} + 6")
    string(SUBSTRING "${page}" ${start} -1 page)
    string(FIND "${page}" "`" nameEnd)
    string(SUBSTRING "${page}" 0 ${nameEnd} name)
    string(FIND "${page}" "\n" lineEnd)
    string(SUBSTRING "${page}" ${lineEnd} -1 page)
    # A section ends where the next one or the next chapter begins.
    string(FIND "${page}" "${mark}" start)
    string(FIND "${page}" "\n## " chapter)
    set(end ${start})
    if(NOT chapter EQUAL -1 AND (end EQUAL -1 OR chapter LESS end))
        set(end ${chapter})
    endif()
    string(SUBSTRING "${page}" 0 ${end} text)
    string(APPEND entries "    {\"${name}\", R\"~~~(${text})~~~\"},\n")
endwhile()
file(WRITE ${OUTPUT}
"// Written by write-rule-texts.cmake from Docs/lint.md.

#include \"Diagnostics/Lint/RuleText.h\"

namespace lint {

const std::vector<RuleText>& RuleTexts()
{
    static const std::vector<RuleText> texts = {
${entries}    };
    return texts;
}

} // namespace lint
")
