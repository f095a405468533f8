"""The names that the library's public headers promise: what other programs may link.

Reads the headers as they are formatted here; it is not a C++ parser.
"""

import re
from pathlib import Path

SCOPE = re.compile(r"(?:class|struct)\s+(\w+)[^;(]*$")
NAME = re.compile(r"(~?\w+|operator\S+)\s*\([^()]*(?:\([^()]*\)[^()]*)*\)\s*(?:const|noexcept|override|&&|\s)*$")


def declared_names(header):
    """The functions that a header declares and does not define, private ones left out, as "Class::name"."""
    return set(_declarations(_tokens(header.read_text())))


def _tokens(text):
    """Statements, and the braces between them."""
    text = re.sub(r"//[^\n]*|/\*.*?\*/", " ", text, flags=re.DOTALL)
    text = re.sub(r"^\s*#(?:[^\n]*\\\n)*[^\n]*", " ", text, flags=re.MULTILINE)
    text = re.sub(r'extern "C" \{', " ", text)
    text = re.sub(r"__attribute__\(\(.*?\)\)\)", " ", text)
    return [token.strip() for token in re.split(r"([;{}]|\b(?:public|protected|private):)", text)]


def _declarations(tokens):
    scopes = []  # (the name of a class or None, whether what follows is private)
    before = ""
    for token in tokens:
        if token == "{":
            scope = SCOPE.search(before)
            scopes.append([scope[1] if scope else None, bool(scope) and before.startswith("class")])
        elif token == "}":
            if scopes:
                scopes.pop()
        elif token in ("public:", "protected:", "private:"):
            scopes[-1][1] = token == "private:"
        elif token == ";":
            names = [name for name, _ in scopes]
            if None not in names and not any(private for _, private in scopes):
                yield from _declared(before, names)
            before = ""
            continue
        if token:
            before = token


def _declared(statement, scopes):
    statement = " ".join(statement.split())
    function = NAME.search(statement)
    variable = re.search(r"^(?:extern|static) [^()]*?(\w+)(?:\[\w+\])?$", statement)
    if re.match(r"(?:using|typedef|friend|template|inline|enum)\b", statement):
        return
    if function or variable:
        yield "::".join([*scopes, (function or variable)[1]])


if __name__ == "__main__":
    import sys

    for name in sorted(set().union(*(declared_names(Path(header)) for header in sys.argv[1:]))):
        print(name)
