#include "browse/collection_record.h"

#include "bridge/collections.h"
#include "bridge/json_text.h"

#include <string_view>
#include <variant>

namespace {

std::string_view kindAndCountKeys(CollectionKind kind) {
    switch (kind) {
    case CollectionKind::album:
        return ",\"kind\":\"album\",\"count\":";
    case CollectionKind::folder:
        return ",\"kind\":\"folder\",\"count\":";
    case CollectionKind::smart:
        return ",\"kind\":\"smart\",\"count\":";
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
    const std::optional<std::string>& title = titleOfCollection(collection);
    appendJsonString(json, title ? std::string_view(*title) : "Untitled");
    json += kindAndCountKeys(kind);
    appendJsonNumber(json, static_cast<unsigned long>(count));
    json += '}';
}
