// The least an Elementary program can do for a screen: a window of the screen's size with its background.

#include <cstdio>
#include <cstdlib>

#include <Efreet.h>
#include <Elementary.h>

int main(int argc, char** argv)
{
    // Without these two the toolkit starts cache builders and looks for a system bus.
    efreet_cache_disable();
    setenv("ECORE_NO_SYSTEM_MODULES", "1", 0);

    elm_init(argc, argv);
    Evas_Object* window = elm_win_util_standard_add("WindowFloor", "WindowFloor");
    if (window == nullptr) {
        std::fprintf(stderr, "WindowFloor: no window\n");
        return 3;
    }
    int width = 0;
    int height = 0;
    elm_win_screen_size_get(window, nullptr, nullptr, &width, &height);
    evas_object_resize(window, width, height);
    elm_win_override_set(window, EINA_TRUE); // no window manager runs
    evas_object_show(window);
    elm_run();
    elm_shutdown();
    return 0;
}
