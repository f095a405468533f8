#include "Tests/Fuzz/Check.h"

#include <cstdio>
#include <cstdlib>

void Fail(const std::string& what)
{
    std::fprintf(stderr, "%s\n", what.c_str());
    std::abort();
}
