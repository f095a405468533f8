#pragma once

/// The TV context service: keeps the TV from showing popups over this application.
///
/// The results are 0 on success and negative on failure. An implementation may throw.

#ifdef __cplusplus
extern "C" {
#endif

/// Opens the connection to the service.
int tvcontext_init(void);

/// From here until `tvcontext_end_popup_free` popups are held back.
int tvcontext_begin_popup_free(void);
int tvcontext_end_popup_free(void);

/// Closes the connection to the service.
int tvcontext_fini(void);

#ifdef __cplusplus
}
#endif
