#include "organise/copy_title.h"

std::string titleForCopy(const std::optional<std::string>& title,
                         const std::set<std::string>& siblingTitles) {
    constexpr int lastNumber = 999;
    std::string base = title.value_or("Album") + " copy";
    if (!siblingTitles.contains(base))
        return base;
    for (int number = 2; number <= lastNumber; ++number) {
        std::string candidate = base + ' ' + std::to_string(number);
        if (!siblingTitles.contains(candidate))
            return candidate;
    }
    return base;
}
