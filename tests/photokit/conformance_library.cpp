// What the stand-in holds when a JVM loads it: nothing but a smart album, which takes in whatever
// is imported. Most of the suite's pictures are of one size.
#include "tests/photokit/script.h"

namespace {

const bool filled = [] {
    standin::script().collections = {{.id = "recents", .title = "Recents", .type = 2}};
    standin::script().importedWidth = 8;
    standin::script().importedHeight = 8;
    return true;
}();

} // namespace
