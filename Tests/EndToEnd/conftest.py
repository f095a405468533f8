from desktop_fixtures import bus, desktop, keyboard, other_desktop  # noqa: F401
