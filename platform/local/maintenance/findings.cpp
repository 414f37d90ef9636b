#include "platform/local/maintenance/findings.h"

namespace local {

std::string nameOf(Finding::Kind kind) {
    switch (kind) {
    case Finding::Kind::catalogue:
        return "catalogue";
    case Finding::Kind::rule:
        return "disagreement";
    case Finding::Kind::absent:
        return "absent";
    case Finding::Kind::missing:
        return "missing";
    case Finding::Kind::damaged:
        return "damaged";
    case Finding::Kind::unreadable:
        return "unreadable";
    case Finding::Kind::unnamed:
        break;
    }
    return "unnamed";
}

} // namespace local
