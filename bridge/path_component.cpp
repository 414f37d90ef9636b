#include "bridge/path_component.h"

namespace {

// What is left without slashes at its end: "/" of nothing but slashes.
std::string_view withoutTrailingSlashes(std::string_view path) {
    const auto last = path.find_last_not_of('/');
    return path.substr(0, last == std::string_view::npos ? 1 : last + 1);
}

} // namespace

std::string lastPathComponent(std::string_view path) {
    path = withoutTrailingSlashes(path);
    if (path == "/")
        return "/";
    const auto slash = path.rfind('/');
    return std::string(slash == std::string_view::npos ? path : path.substr(slash + 1));
}

std::string pathWithoutLastComponent(std::string_view path) {
    path = withoutTrailingSlashes(path);
    const auto slash = path.rfind('/');
    if (slash == std::string_view::npos)
        return {};
    return std::string(withoutTrailingSlashes(path.substr(0, slash + 1)));
}
