#include "irsdk/irsdk.h"
#include "tests/support/openobjects.h"
#include "tests/support/publisher.h"
#include "tests/support/testblock.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <ostream>
#include <signal.h>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <tuple>
#include <unistd.h>

// Any user may put any kind of file into the folder of the shared memory, under the simulator's
// names too. Nothing but a regular object is opened, and nothing is waited for.

namespace {

const std::string kFolder = "/dev/shm";
constexpr mode_t kEverybody = 0666;
constexpr unsigned int kSomebodyElse = 4242;

// Nothing here waits: what takes so long hangs.
constexpr unsigned int kHangSeconds = 120;

/** Something else than an object, at a path. */
struct Kind {
    const char* name;
    bool (*make)(const std::string& path, int& held);  // what must stay open goes to `held`
};

void PrintTo(const Kind& kind, std::ostream* out) {
    *out << kind.name;
}

bool makePipe(const std::string& path, int& /*held*/) {
    return mkfifo(path.c_str(), kEverybody) == 0;
}

bool makeFolder(const std::string& path, int& /*held*/) {
    return mkdir(path.c_str(), 0777) == 0;
}

bool makeDevice(const std::string& path, int& /*held*/) {
    return mknod(path.c_str(), S_IFCHR | kEverybody, makedev(1, 5)) == 0;  // endless zeros
}

bool makeSocket(const std::string& path, int& /*held*/) {
    const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    const bool made =
        bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    close(descriptor);
    return made;
}

bool makeSymbolicLink(const std::string& path, int& /*held*/) {
    return symlink("/proc/self/exe", path.c_str()) == 0;
}

/** A regular object whose holder is asked before others may open it. */
bool makeLeased(const std::string& path, int& held) {
    constexpr off_t kSize = 65536;
    held = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kEverybody);
    return held >= 0 && ftruncate(held, kSize) == 0 && fcntl(held, F_SETLEASE, F_WRLCK) == 0;
}

const Kind kKinds[] = {
    {"Pipe", &makePipe},     {"Folder", &makeFolder}, {"Device", &makeDevice},
    {"Socket", &makeSocket}, {"Leased", &makeLeased}, {"SymbolicLink", &makeSymbolicLink},
};

class OtherKind : public ::testing::TestWithParam<std::tuple<Kind, unsigned int>> {
protected:
    void SetUp() override {
        signal(SIGIO, SIG_IGN);  // tells the holder of a lease
        alarm(kHangSeconds);
        irsdk_shutdown();
    }

    void TearDown() override {
        irsdk_shutdown();
        alarm(0);
        if (m_held >= 0) {
            close(m_held);
        }
        std::filesystem::remove(m_path);
        signal(SIGIO, SIG_DFL);
    }

    void put(const std::string& name) {
        const auto [kind, owner] = GetParam();
        m_path = kFolder + name;
        std::filesystem::remove(m_path);
        ASSERT_TRUE(kind.make(m_path, m_held)) << std::strerror(errno);
        ASSERT_EQ(lchown(m_path.c_str(), owner, static_cast<gid_t>(-1)), 0);
    }

    void expectAbsent(irsdk_Error absent) {
        const testsupport::OpenObjects before = testsupport::OpenObjects::now();
        EXPECT_FALSE(irsdk_startup());
        EXPECT_EQ(irsdk_lastError(), absent);
        EXPECT_FALSE(irsdk_getNewData(nullptr));
        EXPECT_FALSE(irsdk_waitForDataReady(1, nullptr));
        irsdk_shutdown();
        EXPECT_EQ(testsupport::OpenObjects::now(), before);
    }

    testsupport::Publisher publisher{testsupport::Publisher::Where::ThisProcess};
    testsupport::TestBlock block;

private:
    std::string m_path;
    int m_held = -1;
};

}  // namespace

TEST_P(OtherKind, UnderTheNameOfTheBlockIsNoBlock) {
    ASSERT_NO_FATAL_FAILURE(put(irsdk_linuxName(IRSDK_MEMMAPFILENAME).data()));
    publisher.createEvent();
    expectAbsent(irsdk_Error::NoBlock);
}

TEST_P(OtherKind, UnderTheNameOfTheEventIsNoEvent) {
    ASSERT_NO_FATAL_FAILURE(put(irsdk_linuxName(IRSDK_DATAVALIDEVENTNAME).data()));
    publisher.publishBlock(block);
    expectAbsent(irsdk_Error::NoEvent);
}

INSTANTIATE_TEST_SUITE_P(Object, OtherKind,
                         ::testing::Combine(::testing::ValuesIn(kKinds),
                                            ::testing::Values(geteuid(), kSomebodyElse)),
                         [](const ::testing::TestParamInfo<OtherKind::ParamType>& row) {
                             const bool own = std::get<1>(row.param) == geteuid();
                             return std::string(std::get<0>(row.param).name) +
                                    (own ? "OfOurs" : "OfAnotherUser");
                         });
