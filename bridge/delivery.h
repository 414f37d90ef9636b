// Waiting for an operation of the photo library that answers through a completion handler.
#pragma once

#include <memory>
#include <mutex>
#include <semaphore>
#include <utility>

// What a completion handler delivers, and the signal that it did. Always shared between the
// waiting call and the handler, never on the call's stack: the handler may still be inside
// release(), or run once more, when the call has returned.
template <class Value>
struct Delivery {
    std::mutex valueMutex;
    Value value;
    std::counting_semaphore<> delivered{0};
};

// `initial` is what the wait answers if a handler signals without a value of its own.
template <class Value>
std::shared_ptr<Delivery<Value>> makeDelivery(Value initial) {
    auto delivery = std::make_shared<Delivery<Value>>();
    delivery->value = std::move(initial);
    return delivery;
}

// Called by the handler, from any thread. A later delivery replaces an earlier one.
template <class Value>
void deliver(Delivery<Value>& delivery, Value value) {
    {
        const std::lock_guard lock(delivery.valueMutex);
        delivery.value = std::move(value);
    }
    delivery.delivered.release();
}

// Waits for the first delivery, without limit: a handler that never runs blocks the caller for
// good.
template <class Value>
Value waitForDelivery(Delivery<Value>& delivery) {
    delivery.delivered.acquire();
    const std::lock_guard lock(delivery.valueMutex);
    return delivery.value;
}
