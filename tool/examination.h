// What photos-kit doctor looks at, and how it keeps what it sees.
#pragma once

#include "tool/output.h"

#include <string>
#include <vector>

namespace tool {

struct Fact {
    std::string label; // for people
    std::string key;   // in JSON
    Json value;
    std::string text; // the value, for people
};

struct Section {
    std::string title;
    std::string key;
    std::vector<Fact> facts;

    void add(std::string label, std::string name, Json value, std::string text) {
        facts.push_back({std::move(label), std::move(name), std::move(value), std::move(text)});
    }
    void add(std::string label, std::string name, const std::string& text) {
        add(std::move(label), std::move(name), text, text);
    }
};

struct Examination {
    std::vector<Section> sections;
    std::vector<std::string> warnings; // a sentence each: what somebody should do something about

    // The section is there until the next begins.
    Section& begin(std::string title, std::string key) {
        return sections.emplace_back(Section{std::move(title), std::move(key), {}});
    }
};

// Each adds a section. None of them makes or changes anything.
void examinePlace(Examination& all, const std::string& library);
void examineDisk(Examination& all, const std::string& library);
void examineUsers(Examination& all, const std::string& library);
void examineImaging(Examination& all);

} // namespace tool
