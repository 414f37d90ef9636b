// Two fences, so that a hole in one is not enough: a seccomp filter that lists the system calls a
// decoder needs, and Landlock, which takes away the whole file system. What is not listed ends the
// process, but for harmless questions that libraries ask, which get an error.
#include "platform/local/imaging/worker/sandbox.h"

#include "platform/local/imaging/wire/protocol.h"
#include "platform/local/imaging/worker/threads.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <memory>

#include <fcntl.h>
#include <linux/landlock.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace local::imaging {

namespace {

using Filter = std::unique_ptr<void, decltype(&seccomp_release)>;

// For its whole life: the host ends one that overruns its time, but a host can be killed first. One
// request takes 20 s at most, on a few threads.
constexpr rlim_t processorSeconds = 600;

// At work it has seven: the standard three, the socket, its own statistics, a file and the room for
// a picture. Loading libraries takes one or two more.
constexpr rlim_t mostDescriptors = 16;

// Memory that counts as addresses, time, and reading what was handed over: pread alone, since
// offsets are shared with the host. Nothing that makes a thread, a descriptor (but by a message
// from the host) or memory that a descriptor holds.
constexpr int kAllowed[] = {
    SCMP_SYS(pread64),         SCMP_SYS(fstat),         SCMP_SYS(close),
    SCMP_SYS(recvmsg),         SCMP_SYS(sendmsg),       SCMP_SYS(brk),
    SCMP_SYS(munmap),          SCMP_SYS(mremap),        SCMP_SYS(madvise),
    SCMP_SYS(futex),           SCMP_SYS(sched_yield),   SCMP_SYS(gettid),
    SCMP_SYS(getpid),          SCMP_SYS(getcpu),        SCMP_SYS(rt_sigprocmask),
    SCMP_SYS(rt_sigreturn),    SCMP_SYS(sigaltstack),   SCMP_SYS(exit),
    SCMP_SYS(exit_group),      SCMP_SYS(clock_gettime), SCMP_SYS(clock_getres),
    SCMP_SYS(clock_nanosleep), SCMP_SYS(nanosleep),     SCMP_SYS(gettimeofday),
    SCMP_SYS(restart_syscall), SCMP_SYS(getrandom),     SCMP_SYS(getrusage),
    SCMP_SYS(membarrier),      SCMP_SYS(sysinfo),       SCMP_SYS(rt_sigaction),
};

struct Refused {
    int call;
    int error;
};

// glibc and the libraries ask these in passing and live with a no: locale, time zone and processor
// files, terminals, a thread's name or place. How many processors there are is refused as well:
// then the libraries take two, and do with the threads that there are. newfstatat is the C
// library's fstat in some versions, but a filter cannot see whether it is given a path. lseek, read
// and write have no use here but on a shared offset.
constexpr Refused kRefused[] = {
    {SCMP_SYS(open), EACCES},
    {SCMP_SYS(openat), EACCES},
    {SCMP_SYS(access), EACCES},
    {SCMP_SYS(faccessat), EACCES},
    {SCMP_SYS(faccessat2), EACCES},
    {SCMP_SYS(stat), EACCES},
    {SCMP_SYS(lstat), EACCES},
    {SCMP_SYS(newfstatat), EACCES},
    {SCMP_SYS(statx), EACCES},
    {SCMP_SYS(readlink), EACCES},
    {SCMP_SYS(readlinkat), EACCES},
    {SCMP_SYS(getcwd), EACCES},
    {SCMP_SYS(ioctl), ENOTTY},
    {SCMP_SYS(lseek), ESPIPE},
    {SCMP_SYS(read), EACCES},
    {SCMP_SYS(write), EACCES},
    {SCMP_SYS(writev), EACCES},
    {SCMP_SYS(uname), EACCES},
    {SCMP_SYS(socket), EACCES},
    {SCMP_SYS(getpeername), ENOTSOCK},
    {SCMP_SYS(prctl), EPERM},
    {SCMP_SYS(getpriority), EPERM},
    {SCMP_SYS(setpriority), EPERM},
    {SCMP_SYS(fadvise64), EINVAL},
    {SCMP_SYS(mbind), EPERM},
    {SCMP_SYS(sched_getaffinity), EPERM},
    {SCMP_SYS(sched_setaffinity), EPERM},
    {SCMP_SYS(sched_getparam), EPERM},
    {SCMP_SYS(sched_setscheduler), EPERM},
    {SCMP_SYS(sched_getscheduler), EPERM},
    {SCMP_SYS(set_mempolicy), EPERM},
    {SCMP_SYS(get_mempolicy), EPERM},
};

bool allow(scmp_filter_ctx filter, int call, std::initializer_list<scmp_arg_cmp> conditions) {
    return seccomp_rule_add_array(filter, SCMP_ACT_ALLOW, call,
                                  static_cast<unsigned>(conditions.size()),
                                  conditions.begin()) == 0;
}

scmp_arg_cmp masked(unsigned argument, std::uint64_t mask, std::uint64_t value) {
    return scmp_arg_cmp{argument, SCMP_CMP_MASKED_EQ, mask, value};
}

scmp_arg_cmp equals(unsigned argument, std::uint64_t value) {
    return scmp_arg_cmp{argument, SCMP_CMP_EQ, value, 0};
}

bool addConditionalRules(scmp_filter_ctx filter) {
    const auto self = static_cast<std::uint64_t>(getpid());
    return allow(filter, SCMP_SYS(mmap), {masked(2, PROT_EXEC, 0)}) &&
           allow(filter, SCMP_SYS(mprotect), {masked(2, PROT_EXEC, 0)}) &&
           allow(filter, SCMP_SYS(fcntl), {equals(1, F_GETFL)}) &&
           allow(filter, SCMP_SYS(fcntl), {equals(1, F_GETFD)}) &&
           // Reading limits.
           allow(filter, SCMP_SYS(prlimit64), {equals(0, 0), equals(2, 0)}) &&
           // So that abort() ends in SIGABRT.
           allow(filter, SCMP_SYS(tgkill), {equals(0, self)});
}

bool loadFilter() {
    const Filter filter(seccomp_init(SCMP_ACT_KILL_PROCESS), &seccomp_release);
    // For every thread: they are there already.
    if (!filter || seccomp_attr_set(filter.get(), SCMP_FLTATR_CTL_TSYNC, 1) != 0)
        return false;
    for (const int call : kAllowed)
        if (!allow(filter.get(), call, {}))
            return false;
    for (const Refused& refused : kRefused)
        if (seccomp_rule_add_array(filter.get(),
                                   SCMP_ACT_ERRNO(static_cast<unsigned>(refused.error)),
                                   refused.call, 0, nullptr) != 0)
            return false;
    return addConditionalRules(filter.get()) && seccomp_load(filter.get()) == 0;
}

// Kernels without Landlock leave it to the filter.
bool forbidFileSystem() {
    const auto version =
        syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    if (version < 1)
        return true;
    // The rights of the first version, which every later one knows. All of them taken away, and
    // no exception added.
    landlock_ruleset_attr rights{};
    rights.handled_access_fs = (std::uint64_t{LANDLOCK_ACCESS_FS_MAKE_SYM} << 1) - 1;
    const auto rules = static_cast<int>(
        syscall(SYS_landlock_create_ruleset, &rights, sizeof rights.handled_access_fs, 0));
    if (rules < 0)
        return false;
    const bool restricted = syscall(SYS_landlock_restrict_self, rules, 0) == 0;
    close(rules);
    return restricted;
}

// Enough for the largest stills of today: 100 megapixels at full size take up 0.8 GB of addresses
// as JPEG, 1.5 as JPEG XL, 1.6 as AVIF, and a picture of 324 MB comes on top. Half of a small
// machine's memory, but no less than it takes to start and to show an ordinary photo.
rlim_t mostAddresses() {
    constexpr std::uint64_t kMost = std::uint64_t{3} << 30;
    constexpr std::uint64_t kLeast = std::uint64_t{1} << 30;
    const auto pages = static_cast<std::uint64_t>(std::max(sysconf(_SC_PHYS_PAGES), 0L));
    const auto page = static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    return std::clamp(pages * page / 2, kLeast, kMost);
}

void limit(decltype(RLIMIT_AS) resource, rlim_t most) {
    const rlimit value{most, most};
    setrlimit(resource, &value);
}

} // namespace

void limitResources() {
    limit(RLIMIT_CORE, 0);
    limit(RLIMIT_NOFILE, mostDescriptors);
    limit(RLIMIT_CPU, processorSeconds);
    if (kInstrumented)
        return;
    limit(RLIMIT_AS, mostAddresses());
}

bool isWornOut() {
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    return used.ru_utime.tv_sec + used.ru_stime.tv_sec > static_cast<time_t>(processorSeconds / 2);
}

bool enterSandbox() {
    prctl(PR_SET_DUMPABLE, 0);
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 || !forbidFileSystem())
        return false;
    // After the file system is forbidden, which holds for threads that are started later only. The
    // sanitizers' reports take calls that the filter forbids.
    return startThreads() && (kInstrumented || loadFilter());
}

} // namespace local::imaging
