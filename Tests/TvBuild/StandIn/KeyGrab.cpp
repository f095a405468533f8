#include <cstdio>

#include <keygrab.h>

namespace {

int Count(const GrabKeyList* list)
{
    int count = 0;
    while (count < GRAB_KEY_COUNT && list->keys[count].keyId >= 0) {
        ++count;
    }
    return count;
}

} // namespace

int Grab_InitKeys(GrabKeyList* list)
{
    for (GrabKey& key : list->keys) {
        key = {-1, 0, 0};
    }
    return 0;
}

int Grab_AddKey(GrabKeyList* list, int keyId, unsigned int mode)
{
    list->keys[Count(list)] = {keyId, mode, 0};
    return 0;
}

int Grab_RegisterKeys(void* /*display*/, unsigned int window, GrabKeyList* list)
{
    std::fprintf(stderr, "Grab_RegisterKeys(%u, %d keys)\n", window, Count(list));
    return 0;
}

int UnGrab_RegisterKeys(void* /*display*/, unsigned int window, GrabKeyList* list)
{
    std::fprintf(stderr, "UnGrab_RegisterKeys(%u, %d keys)\n", window, Count(list));
    return 0;
}
