// Where the photo library lies: the folder "Lumatrice Library" in the user's pictures folder.
#pragma once

#include <optional>
#include <string>

namespace local {

// The library folder's path for the present value of HOME, the only variable read: in the folder
// that $HOME/.config/user-dirs.dirs names as XDG_PICTURES_DIR, else in $HOME/Pictures. Nothing
// when HOME is unset or empty. The file is read once for each value of HOME.
std::optional<std::string> libraryPath();

} // namespace local
