#pragma once

/// Launching applications by their id.

// NOLINTBEGIN(modernize-use-using): the interface is C.

#ifdef __cplusplus
extern "C" {
#endif

/// Arguments for a launched application.
typedef struct _bundle_t bundle;

/// Starts the application with this id. `kb` may be null and stays the caller's.
/// Returns the pid of the started process, or a negative error.
int aul_launch_app(const char* appid, bundle* kb);

#ifdef __cplusplus
}
#endif

// NOLINTEND(modernize-use-using)
