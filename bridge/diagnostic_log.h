// The diagnostic log: one line per noteworthy event, on standard error and, below HOME, in
// .lumatrice/logs/photos-native.log. From any thread, without a lock; lines land whole.
#pragma once

#include "platform/foundation.h"

#include <optional>

// Writes the message, UTF-8 without a newline at its end, as it stands: line breaks inside it are
// not escaped. The standard error line has a prefix and no time, the file line the local time and
// no prefix. The file is opened for each line, so it may be moved or deleted at any time; nobody
// makes its directory here, and without one (or without HOME) only standard error gets the line.
void photosLogLine(const char* message);

// The same for a message made as by printf, cut to 2047 bytes.
[[gnu::format(printf, 1, 2)]] void photosLogFormatted(const char* format, ...);

// What a line says about why a change failed: the error's sentence, or "unknown" without one.
// Points into `error`.
const char* descriptionOrUnknown(const std::optional<platform::NSError>& error);
