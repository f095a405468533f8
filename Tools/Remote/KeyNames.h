#pragma once

#include <string>

#include <X11/X.h>

/// The keysym of a key's name, such as "XF86SimpleMenu". Throws `CommandError` (usage), with the names
/// that were perhaps meant, when there is no such key.
KeySym KeySymNamed(const std::string& name);
