/* The file with the key of the passwords. */

#include "crypto_fixtures.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <sched.h>
#include <sys/mount.h>
#include <thread>

using namespace crypto_fixtures;

namespace {

class KeyFile : public PasswordCipher {
  protected:
    /* What an earlier test found wrong is over: the host tells a trouble again only after that. */
    void SetUp() override {
        PasswordCipher::SetUp();
        KeyFolder other;
        Encrypt("x");
    }

    mode_t Mode() const {
        struct stat status;
        EXPECT_EQ(0, stat(keys_.File().c_str(), &status));
        return status.st_mode & 07777;
    }

    /* That neither way works, and what is told on standard error. */
    std::string ComplaintOfBothWays() {
        char buffer[100] = "#";
        const std::string sealed = SealedText(10, "secret", Bytes(32, 0x11), block_);
        testing::internal::CaptureStderr();
        EXPECT_NE(0u, PSSP_EncryptSec("secret", 6, buffer, sizeof buffer, 0, block_.data(), nullptr));
        EXPECT_STREQ("", buffer);
        EXPECT_TRUE(IsRefused(sealed));
        return testing::internal::GetCapturedStderr();
    }
};

TEST_F(KeyFile, IsMadeByTheFirstEncryptionForItsOwnerAlone) {
    const mode_t before = umask(0);
    Encrypt("secret");
    umask(before);
    EXPECT_EQ(0600u, Mode());
    EXPECT_EQ(32u, keys_.Key().size());
    EXPECT_NE(Bytes(32, 0), keys_.Key());
    EXPECT_EQ(1u, keys_.FilesInside());
}

TEST_F(KeyFile, IsReadableForItsOwnerWhateverTheFileModeMaskIs) {
    const mode_t before = umask(0777);
    Encrypt("secret");
    umask(before);
    EXPECT_EQ(0600u, Mode());
}

TEST_F(KeyFile, IsMadeOnceAndKept) {
    Encrypt("secret");
    const Bytes key = keys_.Key();
    Encrypt("secret");
    EXPECT_EQ(key, keys_.Key());
}

TEST_F(KeyFile, IsMadeInAFolderThatIsMadeForIt) {
    keys_.Use("folder/password.key");
    Encrypt("secret");
    EXPECT_EQ(32u, keys_.Key().size());
    struct stat status;
    ASSERT_EQ(0, stat(keys_.File().parent_path().c_str(), &status));
    EXPECT_EQ(0700u, status.st_mode & 0777);
}

TEST_F(KeyFile, IsNamedRelativeToTheWorkingFolderToo) {
    InChild([this] {
        ASSERT_EQ(0, chdir(keys_.Folder().c_str()));
        setenv("UVELHOST_KEY_FILE", "plain.key", 1);
        Encrypt("secret");
        EXPECT_EQ(32u, std::filesystem::file_size("plain.key"));
    });
}

TEST_F(KeyFile, IsNotMadeByADecryption) {
    testing::internal::CaptureStderr();
    EXPECT_TRUE(IsRefused(SealedText(10, "secret", Bytes(32, 0x11), block_)));
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find("missing"));
    EXPECT_EQ(0u, keys_.FilesInside());
}

TEST_F(KeyFile, IsNotMadeForATextThatCannotBeWritten) {
    char tooSmall[10];
    EXPECT_NE(0u, PSSP_EncryptSec("secret", 6, tooSmall, sizeof tooSmall, 0, block_.data(), nullptr));
    EXPECT_EQ(0u, keys_.FilesInside());
}

TEST_F(KeyFile, IsNotMadeWithoutRandomNumbers) {
    NoRandomNumbers none;
    EXPECT_NE(std::string::npos, ComplaintOfBothWays().find("cannot be made"));
    EXPECT_EQ(0u, keys_.FilesInside());
}

TEST_F(KeyFile, IsNotMadeWhereNoFolderIs) {
    keys_.Use("no/such/folder/password.key");
    EXPECT_NE(std::string::npos, ComplaintOfBothWays().find("cannot be made: No such file or directory"));
}

TEST_F(KeyFile, IsNotMadeUnderANameThatIsTooLong) {
    setenv("UVELHOST_KEY_FILE", ("/" + std::string(4085, 'x')).c_str(), 1);
    EXPECT_NE("", ComplaintOfBothWays());
    setenv("UVELHOST_KEY_FILE", ("/tmp/" + std::string(251, 'x')).c_str(), 1); /* the temporary name would not do */
    char cipher[100];
    testing::internal::CaptureStderr();
    EXPECT_NE(0u, PSSP_EncryptSec("secret", 6, cipher, sizeof cipher, 0, block_.data(), nullptr));
    EXPECT_NE("", testing::internal::GetCapturedStderr());
}

TEST_F(KeyFile, IsRefusedWhenOthersMayReachIt) {
    for (mode_t mode : {0640u, 0620u, 0610u, 0604u, 0602u, 0601u, 0644u, 0666u, 0777u, 04600u, 02600u}) {
        keys_.Put(Bytes(32, 0x11), mode);
        InChild([&] { EXPECT_NE(std::string::npos, ComplaintOfBothWays().find("is too open")); });
        EXPECT_EQ(Bytes(32, 0x11), keys_.Key()) << "a refused file is left alone";
    }
    for (mode_t mode : {0600u, 0400u}) {
        keys_.Put(Bytes(32, 0x11), mode);
        EXPECT_EQ(0u, Decrypt(SealedText(10, "secret", Bytes(32, 0x11), block_))) << mode;
    }
}

TEST_F(KeyFile, IsRefusedWithAnotherSize) {
    for (std::size_t size : {0u, 1u, 31u, 33u, 64u, 4096u}) {
        keys_.Put(Bytes(size, 0x11));
        InChild([&] { EXPECT_NE(std::string::npos, ComplaintOfBothWays().find("32 are expected")); });
        EXPECT_EQ(Bytes(size, 0x11), keys_.Key());
    }
}

TEST_F(KeyFile, IsRefusedWhenItIsSomebodyElses) {
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can give a file away";
    keys_.Put(Bytes(32, 0x11));
    ASSERT_EQ(0, chown(keys_.File().c_str(), 12345, 12345));
    EXPECT_NE(std::string::npos, ComplaintOfBothWays().find("belongs to user 12345"));
}

TEST_F(KeyFile, IsRefusedWhenItIsNoFile) {
    ASSERT_EQ(0, mkdir(keys_.File().c_str(), 0700));
    InChild([&] { EXPECT_NE(std::string::npos, ComplaintOfBothWays().find("not a regular file")); });
    keys_.Use("pipe");
    ASSERT_EQ(0, mkfifo(keys_.File().c_str(), 0600));
    InChild([&] { EXPECT_NE(std::string::npos, ComplaintOfBothWays().find("not a regular file")); });
}

TEST_F(KeyFile, MayBeASymbolicLinkToOne) {
    keys_.Put(Bytes(32, 0x11));
    const auto target = keys_.File();
    keys_.Use("link.key");
    std::filesystem::create_symlink(target, keys_.File());
    EXPECT_EQ(0u, Decrypt(SealedText(10, "secret", Bytes(32, 0x11), block_)));
}

TEST_F(KeyFile, IsNotMadeThroughASymbolicLinkThatLeadsNowhere) {
    std::filesystem::create_symlink(keys_.Folder() / "elsewhere", keys_.File());
    EXPECT_NE("", ComplaintOfBothWays());
    EXPECT_EQ(1u, keys_.FilesInside());
}

TEST_F(KeyFile, TroubleIsToldOnceUntilItIsOver) {
    const std::string line = "uvelhost: key file " + keys_.File().string() + ": 31 bytes, 32 are expected\n";
    keys_.Put(Bytes(31, 0x11));
    EXPECT_EQ(line, ComplaintOfBothWays());
    EXPECT_EQ("", ComplaintOfBothWays());
    keys_.Put(Bytes(32, 0x11));
    EXPECT_EQ(0u, Decrypt(Encrypt("secret"))) << "a file that was put right is used";
    keys_.Put(Bytes(31, 0x11));
    EXPECT_EQ(line, ComplaintOfBothWays());
}

TEST_F(KeyFile, StandsInTheSystemsFolderByDefault) {
    InChild([this] {
        if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("none", "/var/lib", "tmpfs", 0, nullptr) != 0)
            return; /* not allowed here */
        for (const char *value : {static_cast<const char *>(nullptr), ""}) {
            if (value == nullptr)
                unsetenv("UVELHOST_KEY_FILE");
            else
                setenv("UVELHOST_KEY_FILE", value, 1);
            Encrypt("secret");
            EXPECT_EQ(32u, std::filesystem::file_size("/var/lib/uvelhost/password.key"));
        }
    });
}

TEST_F(KeyFile, IsTheSameForProcessesThatMakeItAtOnce) {
    for (int round = 0; round < 10; ++round) {
        keys_.Use("round" + std::to_string(round) + "/password.key");
        constexpr int PROCESSES = 8;
        int gate[2];
        int texts[2];
        ASSERT_EQ(0, pipe(gate));
        ASSERT_EQ(0, pipe(texts));
        std::vector<pid_t> children;
        for (int i = 0; i < PROCESSES; ++i) {
            children.push_back(fork());
            if (children.back() == 0) {
                close(gate[1]);
                char byte;
                if (read(gate[0], &byte, 1) != 0)
                    _exit(2);
                const std::string text = Encrypt("secret") + "\n";
                _exit(write(texts[1], text.data(), text.size()) == std::ssize(text) ? 0 : 3);
            }
        }
        close(gate[0]);
        close(gate[1]); /* and they go */
        close(texts[1]);
        std::string written;
        char part[4096];
        for (ssize_t got; (got = read(texts[0], part, sizeof part)) > 0;)
            written.append(part, static_cast<std::size_t>(got));
        close(texts[0]);
        for (pid_t child : children) {
            int status = 0;
            ASSERT_EQ(child, waitpid(child, &status, 0));
            EXPECT_EQ(0, status);
        }
        EXPECT_EQ(PROCESSES, std::count(written.begin(), written.end(), '\n'));
        for (std::size_t at = 0; at < written.size(); at = written.find('\n', at) + 1) {
            EXPECT_EQ(0u, Decrypt(written.substr(at, written.find('\n', at) - at)));
            EXPECT_EQ("secret", Opened());
        }
        EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(keys_.File().parent_path()), {}));
    }
}

TEST_F(KeyFile, IsTheSameForThreadsThatMakeItAtOnce) {
    constexpr std::size_t THREADS = 8;
    std::array<std::string, THREADS> texts;
    std::atomic<bool> go{false};
    std::vector<std::thread> threads;
    for (std::string &text : texts)
        threads.emplace_back([&] {
            while (!go)
                std::this_thread::yield();
            text = Encrypt("secret");
        });
    go = true;
    for (std::thread &thread : threads)
        thread.join();
    for (const std::string &text : texts)
        EXPECT_EQ(0u, Decrypt(text));
    EXPECT_EQ(1u, keys_.FilesInside());
}

} // namespace
