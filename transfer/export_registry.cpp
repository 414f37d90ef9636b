#include "transfer/export_registry.h"

#include <mutex>
#include <unordered_map>

namespace {

using Exports = std::unordered_map<jint, platform::PHAssetResourceDataRequestID>;

// Never destroyed: other threads may still be exporting while the process ends.
std::mutex& g_exportsLock = *new std::mutex;
Exports& g_exports = *new Exports;

} // namespace

void registerExport(jint exportRequestId, platform::PHAssetResourceDataRequestID dataRequestId) {
    const std::lock_guard lock(g_exportsLock);
    g_exports.insert_or_assign(exportRequestId, dataRequestId);
}

void unregisterExport(jint exportRequestId) {
    const std::lock_guard lock(g_exportsLock);
    g_exports.erase(exportRequestId);
}

std::optional<platform::PHAssetResourceDataRequestID> dataRequestOfExport(jint exportRequestId) {
    const std::lock_guard lock(g_exportsLock);
    const auto entry = g_exports.find(exportRequestId);
    if (entry == g_exports.end())
        return std::nullopt;
    return entry->second;
}
