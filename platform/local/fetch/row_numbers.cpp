#include "platform/local/fetch/row_numbers.h"

#include "platform/local/catalogue/asset_record.h"
#include "platform/local/fetch/fetched_assets.h"

namespace local {

std::vector<std::int64_t> rowNumbers(const platform::PHFetchResult<platform::PHAsset>& assets) {
    if (!assets.object)
        return {};
    auto* fetched = static_cast<FetchedAssets*>(assets.object.get());
    if (const auto* many = std::get_if<ManyAssets>(fetched))
        return many->rowNumbers();
    return std::visit(
        [](auto& read) {
            std::vector<std::int64_t> numbers;
            for (std::size_t i = 0; i < read.count(); ++i) {
                if (const auto asset = read.at(i))
                    numbers.push_back(recordOf(*asset).n);
            }
            return numbers;
        },
        *fetched);
}

std::string jsonArray(std::span<const std::int64_t> numbers) {
    std::string json = "[";
    for (const std::int64_t number : numbers) {
        if (json.size() > 1)
            json += ',';
        json += std::to_string(number);
    }
    return json += ']';
}

} // namespace local
