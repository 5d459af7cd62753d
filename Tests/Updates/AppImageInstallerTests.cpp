#include "Updates/AppImageInstaller.h"
#include "Updates/DetachedProcess.h"
#include "Updates/InstallerFixture.h"

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fernhollow::tests {
namespace {

namespace fs = std::filesystem;

class AppImageInstallation : public InstallerTest {
protected:
    AppImageInstallation() {
        write(file_, "old");
        ::chmod(file_.c_str(), 0750);
    }

    void expectOld() const {
        EXPECT_EQ(contents(file_), "old");
        EXPECT_THAT(namesIn(file_.parent_path()), ElementsAre("Fernhollow.AppImage"));
    }

    const fs::path file_ = home_.path() / "Applications/Fernhollow.AppImage";
    const AppImage image_{.file = file_, .appDir = "/tmp/.mount_fern"};
    AppImageInstaller installer_{image_, key_.publicKey()};
};

TEST_F(AppImageInstallation, PutsTheNewFileInPlaceWithTheOldOnesRights) {
    const std::string bytes(300'000, 'n'); // more than one buffer
    const fs::path foreign = file_.parent_path() / ".fernhollow-update-notes.txt";
    write(foreign, "not ours");
    write(file_.parent_path() / ".fernhollow-update-Ab3dEf", "of an installation that was killed");
    EXPECT_EQ(install(installer_, download(bytes)), UpdateInstaller::Outcome::relaunch);
    EXPECT_EQ(contents(file_), bytes);
    EXPECT_EQ(modeOf(file_), 0750U);
    EXPECT_THAT(namesIn(file_.parent_path()), ElementsAre(foreign.filename(), "Fernhollow.AppImage"));
    EXPECT_FALSE(fs::exists(downloaded_)) << "the download has done its service";
    for (const auto& [old, expected] : {std::pair(0644U, 0744U), std::pair(04755U, 0755U)}) {
        ::chmod(file_.c_str(), old);
        install(installer_, download("new"));
        EXPECT_EQ(modeOf(file_), expected) << std::oct << old;
    }
}

TEST_F(AppImageInstallation, TakesNothingThatChangedSinceItWasVerified) {
    for (const char* changed : {"", "genuin", "genuine!", "genuinE"}) {
        const auto update = download("genuine");
        write(downloaded_, changed);
        EXPECT_THAT(failure(installer_, update), StartsWith("install: The update changed")) << changed;
        expectOld();
    }
    const auto update = download("genuine");
    fs::rename(downloaded_, downloaded_.native() + "-elsewhere");
    fs::create_symlink(downloaded_.native() + "-elsewhere", downloaded_);
    EXPECT_THAT(failure(installer_, update), StartsWith("install: ")) << "a link in its place";
    expectOld();
}

TEST_F(AppImageInstallation, SaysWhyAndLeavesNothingWhenTheDiskRefuses) {
    const auto update = download(std::string(10'000, 'n'));
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{.rlim_cur = 5'000, .rlim_max = before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
    const std::string said = failure(installer_, update);
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);

    EXPECT_EQ(said, "install: The update could not be put into " + file_.parent_path().native() +
                        ": File too large.");
    expectOld();

    fs::remove_all(file_.parent_path());
    EXPECT_THAT(failure(installer_, update), HasSubstr("No such file or directory"));
    EXPECT_FALSE(fs::exists(file_.parent_path()));
}

TEST_F(AppImageInstallation, IsForTheFileThatTheProgramRunsFrom) {
    const fs::path mount = home_.path() / "mount";
    const fs::path link = home_.path() / "link";
    fs::create_directories(mount / "usr/bin");
    fs::create_symlink(file_, link);
    const EnvironmentGuard appDir("APPDIR", mount.native());
    const auto found = [](const std::string& appImage, const fs::path& executable) {
        const EnvironmentGuard guard("APPIMAGE", appImage);
        const auto image = findAppImage(executable);
        return image ? image->file : fs::path();
    };
    const fs::path inside = mount / "usr/bin/fernhollow";
    EXPECT_EQ(found(link, inside), file_);
    EXPECT_EQ(found("", inside), "");
    EXPECT_EQ(found(home_.path() / "missing", inside), "");
    EXPECT_EQ(found(file_, mount.native() + "2/fernhollow"), "") << "another program, started by it";
}

TEST(OutsideAnAppImage, LeavesNothingOfItInTheEnvironment) {
    const Environment environment{"PATH=/mnt/app/usr/bin:/usr/bin:/bin",
                                  "LD_LIBRARY_PATH=/mnt/app/lib:/mnt/app",
                                  "OTHER=/mnt/application:/usr",
                                  "APPDIR=/mnt/app",
                                  "OWD=/home/ada",
                                  "EMPTY="};
    EXPECT_THAT(outsideAppImage(environment, "/mnt/app"),
                ElementsAre("PATH=/usr/bin:/bin", "OTHER=/mnt/application:/usr", "EMPTY="));
}

// A process that arranges its successor, holds a file and blocks a signal as the program does, and ends when
// told.
TEST_F(AppImageInstallation, StartsTheNewProgramOnceTheOldOneHasEnded) {
    const fs::path said = home_.path() / "said";
    write(file_, "#!/bin/sh\n{ echo \"$APPDIR|$KEPT|$PWD\"; ls /proc/self/fd | wc -l; grep SigBlk "
                 "/proc/self/status; } >" +
                     said.native() + ".part && mv " + said.native() + ".part " + said.native() + "\n");
    int ends[2];
    ASSERT_EQ(pipe(ends), 0); // not closed on exec, like the pipe that holds a mount
    const EnvironmentGuard mounted("APPDIR", "/tmp/.mount_fern");
    const EnvironmentGuard kept("KEPT", "yes");
    const pid_t child = fork();
    if (child == 0) {
        close(ends[1]);
        sigset_t blocked;
        sigemptyset(&blocked);
        sigaddset(&blocked, SIGTERM);
        sigprocmask(SIG_BLOCK, &blocked, nullptr);
        installer_.relaunch();
        installer_.relaunch(); // and no second program
        char byte = 0;
        _exit(static_cast<int>(read(ends[0], &byte, 1)));
    }
    EXPECT_FALSE(fs::exists(said)) << "the old program has not ended";
    close(ends[0]);
    close(ends[1]);
    ASSERT_TRUE(waitUntil([&] { return fs::exists(said); }));
    // Standard input, output and error, and the listing's own.
    EXPECT_EQ(contents(said), "|yes|/\n4\nSigBlk:\t0000000000000000\n");
    waitpid(child, nullptr, 0);
}

} // namespace
} // namespace fernhollow::tests
