#include "bridge/diagnostic_log.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace {

void appendToLogFile(const char* home, const char* message) {
    char path[1024];
    std::snprintf(path, sizeof path, "%s/.lumatrice/logs/photos-native.log", home);
    std::FILE* const file = std::fopen(path, "a");
    if (file == nullptr)
        return;
    const std::time_t now = std::time(nullptr);
    std::tm localTime{};
    localtime_r(&now, &localTime);
    char timestamp[32];
    std::strftime(timestamp, sizeof timestamp, "%Y-%m-%d %H:%M:%S", &localTime);
    // One call, so that the line leaves the stream's buffer in one write.
    std::fprintf(file, "%s %s\n", timestamp, message);
    std::fclose(file);
}

} // namespace

void photosLogLine(const char* message) {
    std::fprintf(stderr, "[photos] %s\n", message);
    std::fflush(stderr);
    if (const char* const home = std::getenv("HOME"))
        appendToLogFile(home, message);
}

void photosLogFormatted(const char* format, ...) {
    char message[2048];
    va_list values;
    va_start(values, format);
    // The analyzer overlooks va_start in every file of a run but the first.
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized)
    std::vsnprintf(message, sizeof message, format, values);
    va_end(values);
    photosLogLine(message);
}

const char* descriptionOrUnknown(const std::optional<platform::NSError>& error) {
    if (!error || !error->localizedDescription)
        return "unknown";
    return error->localizedDescription->c_str();
}
