#include "tests/double/scripted_library.h"

#include <stdexcept>

namespace scripted {

namespace {
Library* g_library = nullptr;
} // namespace

Library& library() {
    if (g_library == nullptr)
        throw std::logic_error("no scripted library is installed");
    return *g_library;
}

Library::Library() : previous(std::exchange(g_library, this)) {}

Library::~Library() {
    joinHandlers();
    g_library = previous;
}

void Library::note(const std::string& line) {
    {
        const std::lock_guard lock(notesMutex);
        notes.push_back(line);
    }
    if (const auto reaction = reactions.find(line); reaction != reactions.end())
        reaction->second();
}

std::vector<std::string> Library::operations() {
    joinHandlers();
    const std::lock_guard lock(notesMutex);
    return notes;
}

bool Library::attempt(const std::string& line) {
    note(line);
    return !failing.contains(line);
}

void Library::runHandler(HandlerCalls calls, const std::function<void()>& handler) {
    const auto runOnAnotherThread = [&](std::function<void()> work) {
        const std::lock_guard lock(notesMutex);
        handlerThreads.emplace_back(std::move(work));
    };
    switch (calls) {
    case HandlerCalls::onceBeforeReturning:
        return handler();
    case HandlerCalls::onceFromAnotherThread:
        return runOnAnotherThread(handler);
    case HandlerCalls::onceFromAnotherThreadBeforeReturning:
        return std::thread(handler).join();
    case HandlerCalls::twiceFromAnotherThread:
        return runOnAnotherThread([handler] { handler(), handler(); });
    }
}

void Library::joinHandlers() {
    std::vector<std::thread> running;
    {
        const std::lock_guard lock(notesMutex);
        running.swap(handlerThreads);
    }
    for (std::thread& thread : running)
        thread.join();
}

} // namespace scripted
