#include "platform/local/imaging/program_path.h"

#include <array>
#include <climits>

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

namespace local::imaging {

namespace {

// The file of this process's program; the name that it was started by need not be a path.
std::string mainProgram() {
    std::array<char, PATH_MAX> path{};
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    return length > 0 ? std::string(path.data(), static_cast<std::size_t>(length)) : std::string();
}

} // namespace

std::string programPath() {
    Dl_info info{};
    link_map* map = nullptr;
    if (dladdr1(reinterpret_cast<const void*>(&programPath), &info, reinterpret_cast<void**>(&map),
                RTLD_DL_LINKMAP) == 0 ||
        !info.dli_fname)
        return {};
    // The dynamic linker's list has no name for the main program.
    const bool isProgram = map && (!map->l_name || !*map->l_name);
    const std::string object = isProgram ? mainProgram() : info.dli_fname;
    const auto slash = object.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : object.substr(0, slash);
    std::string beside = folder + "/photos-kit-imaging";
    const bool isInstalled =
        access(beside.c_str(), F_OK) != 0 && access(PHOTOS_KIT_INSTALLED_IMAGING, F_OK) == 0;
    return isInstalled ? PHOTOS_KIT_INSTALLED_IMAGING : beside;
}

} // namespace local::imaging
