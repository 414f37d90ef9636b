// What the stand-in for the Photos, AppKit and UniformTypeIdentifiers frameworks answers, and what
// it noted. It is dumb: it hands out the values below, notes each call as one line, and carries
// simple changes out on them. Plain C++, so that tests need no Objective-C.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace standin {

struct Failure {
    std::string domain = "PHPhotosErrorDomain";
    long code = 0;
    std::optional<std::string> sentence;
};

// Chunks are handed over one by one; then the request ends with the failure, if there is one.
struct Resource {
    long type = 1;
    std::optional<std::string> name;
    std::optional<std::string> uti;
    std::vector<std::string> chunks;
    std::optional<Failure> failure;
    bool runsUntilCancelled = false;
};

struct Asset {
    std::string id;
    long mediaType = 1;
    unsigned long width = 40;
    unsigned long height = 30;
    std::optional<double> created;
    bool favorite = false;
    bool hidden = false;
    std::vector<Resource> resources;
};

// Type 1 is an album, 2 a smart album, 0 a folder.
struct Collection {
    std::string id;
    std::optional<std::string> title;
    long type = 1;
    std::vector<std::string> assets;
    std::string parent; // a folder's identifier; empty at the top level
};

struct Image {
    bool exists = true;
    bool hasBitmap = true;
    std::optional<std::string> encoded = "jpeg";
};

// How one transaction ends. Its changes are carried out when it is done and takes effect.
struct Change {
    bool done = true;
    std::optional<Failure> failure;
    bool takesEffect = true;
    bool makesRequests = true; // for collections that exist
    bool makesPlaceholders = true;
};

struct Script {
    bool answersBeforeReturning = false; // else from a thread that has no autorelease pool
    long authorization = 3;
    std::vector<Asset> assets;
    std::vector<Collection> collections;
    unsigned long importedWidth = 40; // nothing is decoded: all imported pictures are of one size
    unsigned long importedHeight = 30;
    std::vector<Image> images;
    std::deque<Change> changes; // what is not scripted is done
    bool givesEditingInput = true;
    std::optional<std::string> editingImage;
    std::optional<std::string> earlierEdit; // the format identifier of the edit an asset has
    std::string renderedContent;            // where an output wants the rendered picture

    Asset& asset(const std::string& id);
    Collection* collection(const std::string& id);
};

// The script that calls are answered by. A test fills it in while no call runs.
Script& script();

// Ends what still runs, forgets the notes and starts with an empty script.
void reset();

// The calls since the last reset, one line each, in order.
std::vector<std::string> notes();
void note(const std::string& line);

// Objects of the stand-in's classes that nobody has let go of yet.
long livingObjects();

// ---- For the stand-in itself ----

std::mutex& mutex();

// Runs the work before returning, or on a thread of its own that has no autorelease pool.
void answer(std::function<void()> work);

bool isCancelled(int request);
void cancel(int request);
void waitForCancellation(int request);

void countObject(int change);

} // namespace standin
