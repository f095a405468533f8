#include <cstdio>

#include <aul.h>

int aul_launch_app(const char* appid, bundle* kb)
{
    std::fprintf(stderr, "aul_launch_app(%s, %s)\n", appid, kb == nullptr ? "null" : "a bundle");
    return 4711;
}
