#include "Platform/desktop/app/Popups.h"

#include <memory>

#include <tvcontext.h>

#include "Platform/desktop/app/PopupInhibitor.h"
#include "Platform/desktop/environment/ApplicationId.h"

namespace {

constexpr int kDone = 0;
constexpr int kFailed = -1;

/// Not destroyed at exit: an exit without `tvcontext_fini` may happen while the bus must not be used. The
/// record of the earlier state is on disk.
std::unique_ptr<desktop::PopupInhibitor>& Inhibitor()
{
    static auto* inhibitor = new std::unique_ptr<desktop::PopupInhibitor>;
    return *inhibitor;
}

} // namespace

void desktop::RestorePopupsNow()
{
    if (Inhibitor() != nullptr) {
        Inhibitor()->End();
    }
}

int tvcontext_init(void)
{
    if (Inhibitor() == nullptr) {
        Inhibitor() = std::make_unique<desktop::PopupInhibitor>(desktop::kApplicationId);
    }
    return Inhibitor()->Open() ? kDone : kFailed;
}

int tvcontext_begin_popup_free(void)
{
    return Inhibitor() != nullptr && Inhibitor()->Begin() ? kDone : kFailed;
}

int tvcontext_end_popup_free(void)
{
    if (Inhibitor() == nullptr) {
        return kFailed;
    }
    Inhibitor()->End();
    return kDone;
}

int tvcontext_fini(void)
{
    Inhibitor().reset();
    return kDone;
}
