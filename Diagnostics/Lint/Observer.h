#pragma once

#include "Diagnostics/Lint/ItemChecker.h"
#include "Diagnostics/Lint/StartTag.h"

namespace lint {

/// Is shown what a document announces while it is linted.
class Observer {
public:
    virtual ~Observer() = default;

    /// A project begins. The tag is good during the call.
    virtual void OnProject(const StartTag& project) = 0;

    /// An item has ended. The facts are good during the call.
    virtual void OnItem(const ItemFacts& item) = 0;
};

} // namespace lint
