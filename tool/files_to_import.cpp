#include "tool/files_to_import.h"

#include "platform/local/library/library_location.h"

#include <algorithm>
#include <system_error>

namespace tool {

namespace {

namespace fs = std::filesystem;

class Search {
public:
    explicit Search(FilesToImport& found) : found_(found) {
        std::error_code error;
        if (const auto path = local::libraryPath())
            library_ = fs::canonical(*path, error);
    }

    void add(const fs::path& path) {
        std::error_code error;
        const fs::file_status status = fs::status(path, error);
        if (!fs::exists(status)) {
            refuse(path, error ? sentence(error) : "There is no such file.");
        } else if (isInLibrary(path)) {
            refuse(path, "It belongs to the photo library itself.");
        } else if (fs::is_directory(status)) {
            addFolder(path);
        } else {
            found_.files.push_back(path); // whatever it is: the library tells why it refuses
        }
    }

private:
    static std::string sentence(const std::error_code& error) { return error.message() + "."; }

    void refuse(const fs::path& path, std::string reason) {
        found_.refused.push_back({path.string(), std::move(reason)});
    }

    bool isInLibrary(const fs::path& path) const {
        std::error_code error;
        const fs::path real = fs::canonical(path, error);
        if (error || library_.empty())
            return false;
        const auto [end, rest] =
            std::mismatch(library_.begin(), library_.end(), real.begin(), real.end());
        return end == library_.end();
    }

    bool isLibrary(const fs::path& folder) const {
        std::error_code error;
        return !library_.empty() && fs::equivalent(folder, library_, error);
    }

    void addFolder(const fs::path& folder) {
        std::error_code error;
        std::vector<fs::path> found;
        std::vector<fs::path> open{folder};
        while (!open.empty()) {
            const fs::path here = std::move(open.back());
            open.pop_back();
            fs::directory_iterator entry(here, error);
            for (; !error && entry != fs::directory_iterator(); entry.increment(error))
                addEntry(*entry, found, open);
            if (error)
                refuse(here, "The folder could not be read: " + sentence(error));
        }
        std::sort(found.begin(), found.end());
        found_.files.insert(found_.files.end(), found.begin(), found.end());
    }

    void addEntry(const fs::directory_entry& entry, std::vector<fs::path>& found,
                  std::vector<fs::path>& open) {
        const fs::path& path = entry.path();
        std::error_code error;
        if (path.filename().string().starts_with('.'))
            return;
        if (!entry.is_directory(error))
            found.push_back(path);
        else if (entry.is_symlink(error))
            refuse(path, "It is a link to a folder; name that folder to import it.");
        else if (!isLibrary(path))
            open.push_back(path);
    }

    FilesToImport& found_;
    fs::path library_;
};

} // namespace

FilesToImport findFilesToImport(const std::vector<std::string>& paths) {
    FilesToImport found;
    Search search(found);
    for (const std::string& path : paths)
        search.add(path);
    return found;
}

} // namespace tool
