#include "platform/local/change/change_transaction.h"

#include "platform/local/system/guarded.h"

namespace local {

namespace {

thread_local ChangeTransaction* currentTransaction = nullptr;

} // namespace

ChangeTransaction* ChangeTransaction::current() {
    return currentTransaction;
}

void ChangeTransaction::collect(const std::function<void()>& block) {
    struct Restore {
        ChangeTransaction* outer;
        std::optional<platform::NSError>* outerFailures;
        ~Restore() {
            currentTransaction = outer;
            keepFailuresIn(outerFailures);
        }
    } const restore{std::exchange(currentTransaction, this), keepFailuresIn(&refusal)};
    block();
}

} // namespace local
