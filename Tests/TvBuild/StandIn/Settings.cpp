#include <cstdlib>

#include <vconf.h>

// Every key holds what STAND_IN_SETTING says, and nothing ever changes.

int vconf_get_int(const char* /*in_key*/, int* intval)
{
    const char* value = std::getenv("STAND_IN_SETTING");
    if (value == nullptr) {
        return -1;
    }
    *intval = std::atoi(value);
    return 0;
}

char* vconf_get_str(const char* /*in_key*/)
{
    return nullptr;
}

int vconf_set_int(const char* /*in_key*/, int /*intval*/)
{
    return -1;
}

int vconf_set_str(const char* /*in_key*/, const char* /*strval*/)
{
    return -1;
}

int vconf_notify_key_changed(const char* /*in_key*/, vconf_callback_fn /*cb*/, void* /*user_data*/)
{
    return 0;
}

int vconf_ignore_key_changed(const char* /*in_key*/, vconf_callback_fn /*cb*/)
{
    return 0;
}

char* vconf_keynode_get_name(keynode_t* /*keynode*/)
{
    return nullptr;
}

int vconf_keynode_get_int(keynode_t* /*keynode*/)
{
    return 0;
}
