#include "platform/local/maintenance/library_users.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string_view>

namespace local {

namespace {

namespace fs = std::filesystem;

// Where SQLite locks bytes of library.db-shm: one each for the writer, the checkpointer, recovery,
// and five for readers.
constexpr long writerByte = 120;
constexpr long checkpointerByte = 121;
constexpr long firstReaderByte = 123;
constexpr long lastReaderByte = 127;

struct Users {
    struct stat catalogue {}; // zeros: there is none
    struct stat sharedMemory {};
    std::vector<struct stat> incoming;
    std::map<pid_t, LibraryUser> found;
};

bool isSame(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

std::string programOf(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/comm");
    std::string name;
    std::getline(file, name);
    return name;
}

LibraryUser& user(Users& users, pid_t process) {
    LibraryUser& one = users.found[process];
    if (one.process == 0)
        one = {process, programOf(process)};
    return one;
}

bool hasOpen(const fs::path& process, const struct stat& wanted) {
    std::error_code error;
    for (fs::directory_iterator at(process / "fd", error), end; !error && at != end;
         at.increment(error)) {
        struct stat file {};
        if (stat(at->path().c_str(), &file) == 0 && isSame(file, wanted))
            return true;
    }
    return false;
}

void findOpen(Users& users) {
    std::error_code error;
    for (fs::directory_iterator at("/proc", error), end; !error && at != end; at.increment(error)) {
        const std::string name = at->path().filename().string();
        pid_t process = 0;
        const auto read = std::from_chars(name.data(), name.data() + name.size(), process);
        if (read.ec != std::errc{} || read.ptr != name.data() + name.size() || process == getpid())
            continue;
        if (hasOpen(at->path(), users.catalogue))
            user(users, process);
    }
}

struct Lock {
    std::string kind; // POSIX or FLOCK
    pid_t process = 0;
    unsigned major = 0;
    unsigned minor = 0;
    unsigned long inode = 0;
    long first = 0;
    long last = 0;
};

// Such as "7: POSIX  ADVISORY  WRITE 4711 08:01:131 120 120". With "->" it is one that waits.
bool readLock(const std::string& line, Lock& lock) {
    std::istringstream words(line);
    std::string number, advisory, access, place, last;
    words >> number >> lock.kind >> advisory >> access >> lock.process >> place >> lock.first >>
        last;
    if (!words || lock.kind == "->" || lock.process <= 0)
        return false;
    lock.last = last == "EOF" ? -1 : std::strtol(last.c_str(), nullptr, 10);
    return std::sscanf(place.c_str(), "%x:%x:%lu", &lock.major, &lock.minor, &lock.inode) == 3;
}

// Some file systems tell another device here than in the status of their files.
bool isOn(const Lock& lock, const struct stat& file, const Users& users) {
    if (lock.inode != file.st_ino)
        return false;
    return (major(file.st_dev) == lock.major && minor(file.st_dev) == lock.minor) ||
           users.found.contains(lock.process);
}

void noteCatalogueLock(const Lock& lock, LibraryUser& holder) {
    const auto holds = [&](long byte) {
        return lock.first <= byte && (byte <= lock.last || lock.last < 0);
    };
    holder.writes |= holds(writerByte);
    holder.checkpoints |= holds(checkpointerByte);
    for (long byte = firstReaderByte; byte <= lastReaderByte; ++byte)
        holder.reads |= holds(byte);
}

void findLocks(Users& users) {
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
        Lock lock;
        if (!readLock(line, lock) || lock.process == getpid())
            continue;
        if (lock.kind == "POSIX" && isOn(lock, users.sharedMemory, users))
            noteCatalogueLock(lock, user(users, lock.process));
        for (const struct stat& file : users.incoming) {
            if (lock.kind == "FLOCK" && isOn(lock, file, users))
                ++user(users, lock.process).files;
        }
    }
}

} // namespace

std::vector<LibraryUser> usersOf(const std::string& library) {
    Users users;
    const bool any = stat((library + "/library.db").c_str(), &users.catalogue) == 0;
    stat((library + "/library.db-shm").c_str(), &users.sharedMemory);
    std::error_code error;
    for (fs::directory_iterator at(library + "/incoming", error), end; !error && at != end;
         at.increment(error)) {
        struct stat file {};
        if (lstat(at->path().c_str(), &file) == 0)
            users.incoming.push_back(file);
    }
    if (any)
        findOpen(users);
    findLocks(users);
    std::vector<LibraryUser> all;
    for (auto& [process, found] : users.found)
        all.push_back(std::move(found));
    return all;
}

} // namespace local
