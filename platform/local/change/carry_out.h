// From what was asked for to what is committed.
#pragma once

#include "platform/local/change/change_transaction.h"

#include <functional>
#include <vector>

namespace local {

// What takes long is done first, without a lock; then all of it in one write transaction. Throws
// LibraryError, and then nothing of it is in force.
void carryOut(const ChangeTransaction& changes);

// Carries out steps of the library's owner, who needs no access granted: one write transaction.
// Throws LibraryError.
void carryOutSteps(const std::vector<std::function<void(CatalogueConnection&)>>& steps);

} // namespace local
