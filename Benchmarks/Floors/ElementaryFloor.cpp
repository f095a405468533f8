// The least an Elementary program can do for a key: a window, a key-up callback, posix_spawn.
//
// ElementaryFloor KEYSYM PROGRAM: starts the program at each release of the key. No key is
// grabbed: the window takes the focus.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <spawn.h>
#include <unistd.h>

#include <Ecore_X.h>
#include <Efreet.h>
#include <Elementary.h>

namespace {

struct Launch {
    const char* key;
    char* program;
};

void OnKeyUp(void* data, Evas* /*canvas*/, Evas_Object* /*object*/, void* eventInfo)
{
    const auto* launch = static_cast<const Launch*>(data);
    if (std::strcmp(static_cast<const Evas_Event_Key_Up*>(eventInfo)->key, launch->key) != 0) {
        return;
    }
    char* arguments[] = {launch->program, nullptr};
    pid_t pid = -1;
    if (posix_spawn(&pid, launch->program, nullptr, nullptr, arguments, environ) != 0) {
        std::fprintf(stderr, "ElementaryFloor: cannot start %s\n", launch->program);
    }
}

Eina_Bool OnWindowShown(void* /*data*/, int /*type*/, void* event)
{
    ecore_x_window_focus(static_cast<const Ecore_X_Event_Window_Show*>(event)->win);
    return ECORE_CALLBACK_PASS_ON;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: ElementaryFloor KEYSYM PROGRAM\n");
        return 2;
    }
    // Without these two the toolkit starts cache builders and looks for a system bus.
    efreet_cache_disable();
    setenv("ECORE_NO_SYSTEM_MODULES", "1", 0);

    elm_init(argc, argv);
    Launch launch{argv[1], argv[2]};
    Evas_Object* window = elm_win_add(nullptr, "ElementaryFloor", ELM_WIN_DIALOG_BASIC);
    if (window == nullptr) {
        std::fprintf(stderr, "ElementaryFloor: no window\n");
        return 3;
    }
    ecore_event_handler_add(ECORE_X_EVENT_WINDOW_SHOW, OnWindowShown, nullptr);
    evas_object_event_callback_add(window, EVAS_CALLBACK_KEY_UP, OnKeyUp, &launch);
    evas_object_show(window);
    elm_run();
    elm_shutdown();
    return 0;
}
