#include "Updates/FakeService.h"
#include "Updates/InstallerFixture.h"
#include "Updates/PackageInstaller.h"

#include <sys/stat.h>

namespace fernhollow::tests {
namespace {

namespace fs = std::filesystem;

const QString modify = QStringLiteral("org.freedesktop.PackageKit.Modify");
const QString modify2 = QStringLiteral("org.freedesktop.PackageKit.Modify2");
const QString fileManager = QStringLiteral("org.freedesktop.FileManager1");

QDBusMessage accept(const QDBusMessage& call) {
    return call.createReply();
}

class PackageInstallation : public InstallerTest {
protected:
    PackageInstallation() {
        write(executable_, "old program");
        fs::create_directories(downloads_);
        files_.interfaces[fileManager] = accept;
    }

    // As dpkg does: a new file takes the name.
    void replaceProgram() const {
        write(executable_.native() + ".new", "new program");
        fs::rename(executable_.native() + ".new", executable_);
    }

    const fs::path executable_ = home_.path() / "usr/lib/fernhollow/fernhollow";
    const fs::path downloads_ = home_.path() / "Downloads";
    FakeService packageKit_{QStringLiteral("org.freedesktop.PackageKit"),
                            QStringLiteral("/org/freedesktop/PackageKit")};
    FakeService files_{fileManager, QStringLiteral("/org/freedesktop/FileManager1")};
    PackageInstaller* make() {
        installer_ = std::make_unique<PackageInstaller>(
            PackageInstaller::Surroundings{.executable = executable_,
                                           .downloads = downloads_,
                                           .publicKey = key_.publicKey(),
                                           .bus = QDBusConnection::sessionBus()});
        return installer_.get();
    }
    std::unique_ptr<PackageInstaller> installer_;
};

TEST_F(PackageInstallation, RelaunchesOnceTheDesktopHasInstalledThePackage) {
    for (const QString& interface : {modify2, modify}) {
        make();
        packageKit_.interfaces = {{interface, [this](const QDBusMessage& call) {
                                       EXPECT_EQ(contents(downloaded_), "package");
                                       replaceProgram();
                                       return call.createReply();
                                   }}};
        EXPECT_EQ(install(*installer_, download("package")), UpdateInstaller::Outcome::relaunch);
        EXPECT_THAT(installer_->handOverNote(), IsEmpty());
        EXPECT_FALSE(fs::exists(downloaded_));
    }
    ASSERT_EQ(packageKit_.calls.size(), 2);
    const QStringList files{QString::fromStdString(downloaded_.native())};
    EXPECT_EQ(packageKit_.calls[0].signature(), u"asssa{sv}");
    EXPECT_EQ(packageKit_.calls[0].arguments()[0].toStringList(), files);
    EXPECT_EQ(packageKit_.calls[0].arguments()[2], QStringLiteral("app.fernhollow.Fernhollow.desktop"));
    EXPECT_EQ(packageKit_.calls[1].signature(), u"uass");
    EXPECT_EQ(packageKit_.calls[1].arguments()[1].toStringList(), files);
    EXPECT_THAT(files_.calls, IsEmpty());

    packageKit_.interfaces = {{modify2, accept}}; // the installer goes on in its window
    EXPECT_EQ(install(*make(), download("package")), UpdateInstaller::Outcome::handedOver);
    EXPECT_EQ(installer_->handOverNote(),
              "Finish the update in the window of your software installer, then start Fernhollow again.");
    EXPECT_EQ(contents(downloaded_), "package");
}

TEST_F(PackageInstallation, SaysWhenItWasCancelledOrFailed) {
    for (const auto& [error, expected] :
         {std::pair("Modify2.Cancelled", "cancelled: The installation was cancelled."),
          std::pair("Modify2.Failed",
                    "install: Your system's installer could not install the update: it said no")}) {
        const QString name = QStringLiteral("org.freedesktop.PackageKit.") + QString::fromLatin1(error);
        packageKit_.interfaces = {{modify2, [&name](const QDBusMessage& call) {
                                       return call.createErrorReply(name, QStringLiteral("it said no"));
                                   }}};
        EXPECT_EQ(failure(*make(), download("package")), expected);
        EXPECT_FALSE(fs::exists(downloaded_)) << error;
        EXPECT_EQ(contents(executable_), "old program");
    }
    EXPECT_THAT(files_.calls, IsEmpty()) << "who said no is not asked once more";
}

TEST_F(PackageInstallation, ShowsThePackageAmongTheDownloadsWhereNobodyInstallsIt) {
    write(downloads_ / "fernhollow_0.2.0.deb", "of an earlier time");
    EXPECT_EQ(install(*make(), download("package")), UpdateInstaller::Outcome::handedOver);
    const fs::path shown = downloads_ / "fernhollow_0.2.0.deb";
    EXPECT_EQ(installer_->handOverNote(), "Open fernhollow_0.2.0.deb in " + downloads_.native() +
                                              " with your software installer to finish the update.");
    EXPECT_EQ(contents(shown), "package");
    EXPECT_EQ(modeOf(shown), 0644U);
    ASSERT_EQ(files_.calls.size(), 1);
    EXPECT_EQ(files_.calls[0].member(), u"ShowItems");
    EXPECT_EQ(files_.calls[0].signature(), u"ass");
    EXPECT_EQ(files_.calls[0].arguments()[0].toStringList(),
              QStringList{QStringLiteral("file://") + QString::fromStdString(shown.native())});
}

TEST_F(PackageInstallation, OpensTheFolderWhereNoFileManagerIsOnTheBus) {
    files_.interfaces.clear();
    const fs::path opener = home_.path() / "bin/xdg-open";
    const fs::path opened = home_.path() / "opened";
    write(opener, "#!/bin/sh\necho \"$1\" >" + opened.native() + ".part; mv " + opened.native() + ".part " +
                      opened.native() + "\n");
    ::chmod(opener.c_str(), 0700);
    const EnvironmentGuard path("PATH", opener.parent_path().native() + ":/usr/bin:/bin");
    EXPECT_EQ(install(*make(), download("package")), UpdateInstaller::Outcome::handedOver);
    ASSERT_TRUE(waitUntil([&] { return fs::exists(opened); }));
    EXPECT_EQ(contents(opened), downloads_.native() + "\n");
}

TEST_F(PackageInstallation, NamesTheFileAfterAVersionThatCannotLeadElsewhere) {
    install(*make(), download("package", "1.0~rc1+b-2"));
    install(*make(), download("package", "../../e v\n$(il)"));
    EXPECT_THAT(namesIn(downloads_),
                ElementsAre("fernhollow_.._.._e_v___il_.deb", "fernhollow_1.0~rc1+b-2.deb"));
}

TEST_F(PackageInstallation, IsForProgramsOfOurPackage) {
    const fs::path info = home_.path() / "info";
    write(info / "other.list", "/.\n/usr/lib/other/fernhollow\n");
    write(info / "fernhollow-doc.list", "/.\n/usr/lib/doc/fernhollow\n");
    const std::string program = "/usr/lib/fernhollow/fernhollow";
    EXPECT_FALSE(isInPackage(program, info));
    EXPECT_FALSE(isInPackage(program, home_.path() / "missing"));
    write(info / "fernhollow.list", "/.\n/usr/lib/fernhollow\n" + program + "\n/usr/bin/fernhollow\n");
    EXPECT_TRUE(isInPackage(program, info));
    for (const char* stranger : {"/home/ada/fernhollow", "/usr/lib/fernhollow/fern",
                                 "/usr/lib/other/fernhollow", "/usr/lib/doc/fernhollow", ""}) {
        EXPECT_FALSE(isInPackage(stranger, info)) << stranger;
    }
}

} // namespace
} // namespace fernhollow::tests
