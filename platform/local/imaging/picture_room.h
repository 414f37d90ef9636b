// Memory that the host hands to a worker for one picture.
#pragma once

#include "platform/local/imaging/imaging.h"
#include "platform/local/imaging/wire/cover_size.h"

namespace local::imaging {

// The room cannot grow. What it holds is given back to the system when this ends, whoever still
// has the room open or mapped: a worker can pile up nothing from one request to the next.
class PictureRoom {
public:
    explicit PictureRoom(Size size); // throws std::system_error
    PictureRoom(const PictureRoom&) = delete;
    PictureRoom& operator=(const PictureRoom&) = delete;
    ~PictureRoom();

    int descriptor() const { return memory_.get(); }
    Size size() const { return size_; }
    Pixels read() const; // a copy; throws std::system_error

private:
    Size size_;
    UniqueFd memory_;
};

} // namespace local::imaging
