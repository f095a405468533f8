#include <cstdio>

#include <tvcontext.h>

namespace {

int Note(const char* function)
{
    std::fprintf(stderr, "%s()\n", function);
    return 0;
}

} // namespace

int tvcontext_init(void)
{
    return Note(__func__);
}

int tvcontext_begin_popup_free(void)
{
    return Note(__func__);
}

int tvcontext_end_popup_free(void)
{
    return Note(__func__);
}

int tvcontext_fini(void)
{
    return Note(__func__);
}
