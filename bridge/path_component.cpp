#include "bridge/path_component.h"

std::string lastPathComponent(std::string_view path) {
    const auto last = path.find_last_not_of('/');
    if (last == std::string_view::npos)
        return path.empty() ? "" : "/";
    path = path.substr(0, last + 1);
    const auto slash = path.rfind('/');
    return std::string(slash == std::string_view::npos ? path : path.substr(slash + 1));
}
