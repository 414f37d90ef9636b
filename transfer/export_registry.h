// Exports in flight: what the host calls an export, and what the photo library calls its transfer.
//
// From any thread. The lock is held for a single look or change only, never during a wait or a
// call of the photo library.
#pragma once

#include "platform/asset_resource_manager.h"

#include <jni.h>

#include <optional>

// A second export under the same number takes the place of the first one, which can then no longer
// be found.
void registerExport(jint exportRequestId, platform::PHAssetResourceDataRequestID dataRequestId);

// Whichever export it was that stood there.
void unregisterExport(jint exportRequestId);

std::optional<platform::PHAssetResourceDataRequestID> dataRequestOfExport(jint exportRequestId);
