#include "tests/fuzz/privateobjects_linux.h"

#include <fstream>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <unistd.h>

namespace fuzz {

namespace {

bool writeFile(const char* path, const std::string& text) {
    std::ofstream file(path);
    file << text << std::flush;
    return file.good();
}

/** A user who may not mount becomes the root of a namespace of users, which may. */
bool becomeRootOfOwnNamespace() {
    const std::string user = std::to_string(geteuid());
    const std::string group = std::to_string(getegid());
    return unshare(CLONE_NEWUSER) == 0 && writeFile("/proc/self/setgroups", "deny") &&
           writeFile("/proc/self/uid_map", "0 " + user + " 1") &&
           writeFile("/proc/self/gid_map", "0 " + group + " 1");
}

}  // namespace

bool takePrivateObjects() {
    if (geteuid() != 0 && !becomeRootOfOwnNamespace()) {
        return false;
    }
    return unshare(CLONE_NEWNS) == 0 &&
           mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("tmpfs", "/dev/shm", "tmpfs", 0, nullptr) == 0;
}

}  // namespace fuzz
