#include "platform/local/imaging/worker/vips_picture.h"

#include "platform/local/imaging/worker/threads.h"

#include <algorithm>
#include <string>

#include <dlfcn.h>
#include <gmodule.h>
#include <vips/vips.h>

#include <vips/vector.h> // after vips.h, which it needs

namespace local::imaging {

namespace {

// GLib's warnings are about strangers' files and would go to the host's standard error.
GLogWriterOutput dropWarning(GLogLevelFlags, const GLogField*, gsize, void*) {
    return G_LOG_WRITER_HANDLED;
}

void dropMessage(const char*, GLogLevelFlags, const char*, void*) {}

// The folder that libvips is in, with a slash at its end.
std::string libraryFolder() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&vips_init), &info) == 0 || !info.dli_fname)
        return {};
    const std::string library = info.dli_fname;
    return library.substr(0, library.rfind('/') + 1);
}

bool load(const std::string& file) {
    GModule* module = g_module_open(file.c_str(), G_MODULE_BIND_LOCAL);
    if (module)
        g_module_make_resident(module);
    return module != nullptr;
}

// Where libvips itself would look for its modules; or, when all of it came in one folder, there.
void loadModule(const std::string& folder, const char* name) {
    const std::string modules = "vips-modules-" + std::to_string(VIPS_MAJOR_VERSION) + "." +
                                std::to_string(VIPS_MINOR_VERSION) + "/";
    if (!load(folder + modules + name))
        load(folder + name);
}

} // namespace

bool startVips() {
    g_log_set_writer_func(dropWarning, nullptr, nullptr);
    g_log_set_default_handler(dropMessage, nullptr);
    if (vips_init("photos-kit-imaging") != 0)
        return false;
    const std::string folder = libraryFolder();
    loadModule(folder, "vips-heif.so");
    loadModule(folder, "vips-jxl.so");
    vips_operation_block_set("VipsForeignLoad", TRUE);
    for (const char* loader : {"VipsForeignLoadPng", "VipsForeignLoadWebp", "VipsForeignLoadTiff",
                               "VipsForeignLoadNsgif", "VipsForeignLoadHeif", "VipsForeignLoadJxl",
                               "VipsForeignLoadJpeg"})
        vips_operation_block_set(loader, FALSE);
    // Its vector code is compiled while running, which the sandbox does not let happen.
    vips_vector_set_enabled(FALSE);
    vips_concurrency_set(std::min(vips_concurrency_get(), kMostDecodingThreads));
    // Results of one request are nothing to the next, which may be a stranger's.
    vips_cache_set_max(0);
    return true;
}

} // namespace local::imaging
