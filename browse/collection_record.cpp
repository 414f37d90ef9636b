#include "browse/collection_record.h"

#include "bridge/collections.h"
#include "bridge/json_text.h"

#include <string_view>
#include <variant>

namespace {

std::string_view wordForKind(CollectionKind kind) {
    switch (kind) {
    case CollectionKind::album:
        return "album";
    case CollectionKind::folder:
        return "folder";
    case CollectionKind::smart:
        return "smart";
    }
    return {};
}

const std::string& identifierOf(const platform::PHCollection& collection) {
    return std::visit(
        [](const auto& either) -> const std::string& { return either.localIdentifier; },
        collection);
}

} // namespace

void appendCollectionRecord(std::string& json, const platform::PHCollection& collection,
                            CollectionKind kind, std::size_t count) {
    json += "{\"id\":";
    appendJsonString(json, identifierOf(collection));
    json += ",\"title\":";
    appendJsonString(json, titleOfCollection(collection).value_or("Untitled"));
    json += ",\"kind\":\"";
    json += wordForKind(kind);
    json += "\",\"count\":";
    appendJsonNumber(json, static_cast<unsigned long>(count));
    json += '}';
}
