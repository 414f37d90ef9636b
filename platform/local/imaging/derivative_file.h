// Files of the folder "derivatives": "<first two digits of the key>/<key>.jpg". A cache that
// several processes share and anybody may delete at any time, so every failure here only means
// that there is no derivative. `folder` is the folder's descriptor, or -1. When a file was last
// used is the time of its modification.
#pragma once

#include "platform/local/imaging/imaging.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace local::imaging {

inline constexpr std::string_view kPartEnding = ".part";
inline constexpr double kDerivativeSide = 512; // it covers a square of this side

// A source's folder for as long as this lives.
class DerivativesFolder {
public:
    explicit DerivativesFolder(const PictureSource& source)
        : folder_(source.derivativesFolder ? source.derivativesFolder() : nullptr) {}
    int descriptor() const { return folder_ ? folder_->get() : -1; }

private:
    std::shared_ptr<const UniqueFd> folder_;
};

UniqueFd openDerivative(int folder, const std::string& contentKey);
void removeDerivative(int folder, const std::string& contentKey);

// Costs a look at the file, and once a day a note.
void noteUse(int derivative);

// Appears whole or not at all, even across a power failure. While it is written it has a name that
// ends in kPartEnding, and is locked (flock): one that is not belongs to a writer that died.
void writeDerivative(int folder, const std::string& contentKey,
                     const std::vector<std::uint8_t>& jpeg);

} // namespace local::imaging
