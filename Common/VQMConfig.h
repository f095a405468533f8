#pragma once

/// Build-time configuration: each value can be overridden on the compiler's command line. An installed
/// library brings the values that it was built with.

#if __has_include("Common/VQMInstalledConfig.h")
#include "Common/VQMInstalledConfig.h"
#endif

/// The application's id. The companion GUI's id is this with ".gui" behind it.
#ifndef VQM_APP_ID
#define VQM_APP_ID "org.quillmere.vqmkeygrab"
#endif

/// Where installed applications live; the stored schedule lies in
/// "<this>/<application id>/RECH".
#ifndef VQM_APPS_DIR
#define VQM_APPS_DIR "/opt/usr/apps"
#endif

/// The directory of the demo media.
#ifndef VQM_MEDIA_DIR
#define VQM_MEDIA_DIR "/opt/data/demo_movie"
#endif

/// The constants file that the tools and the companion load when they are given no other.
#ifndef VQM_CONSTANTS_FILE
#define VQM_CONSTANTS_FILE VQM_APPS_DIR "/" VQM_APP_ID "/res/constants.xml"
#endif
