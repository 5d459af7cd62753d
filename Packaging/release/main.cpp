#include "Release.h"
#include "SigningKey.h"
#include "Support/BundleInfo.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>

namespace fernhollow {
namespace {

constexpr const char* usage =
    R"(Makes keys for updates of Fernhollow, signs packages, and enters them into the feed.

  fernhollow-release keys KEYFILE
      Makes a key pair. KEYFILE must not exist; the public key is printed.
  fernhollow-release sign --key KEYFILE PACKAGE
      Prints the signature and the length of a package.
  fernhollow-release feed --key KEYFILE --program FERNHOLLOW.JSON --package-type appimage|deb --url URL
                          [--notes FILE] [--title TEXT] [--link URL] [--version V] [--short-version V]
                          [--minimum-system-version V] [--channel NAME] PACKAGE APPCAST.XML
      Adds the release to the feed, or replaces its entry. The versions, unless they are given, and the
      feed's address and public key are read from FERNHOLLOW.JSON, the file beside the released program.
)";

class CommandLine {
public:
    explicit CommandLine(const QStringList& arguments) {
        for (const char* name : {"key", "program", "package-type", "url", "notes", "title", "link", "version",
                                 "short-version", "minimum-system-version", "channel"}) {
            parser_.addOption(QCommandLineOption(QString::fromLatin1(name), {}, QStringLiteral("value")));
        }
        if (!parser_.parse(arguments)) {
            throw std::runtime_error(parser_.errorText().toStdString());
        }
    }

    /// The word at `index` among those that are not options; 0 is the command.
    std::string word(qsizetype index) const {
        const QStringList words = parser_.positionalArguments();
        return index < words.size() ? words[index].toStdString() : std::string();
    }
    void expectWords(qsizetype count) const {
        if (parser_.positionalArguments().size() != count) {
            throw std::runtime_error("this command takes other arguments; see --help");
        }
    }

    std::string option(const char* name, const std::string& missing = {}) const {
        const QString key = QString::fromLatin1(name);
        return parser_.isSet(key) ? parser_.value(key).toStdString() : missing;
    }
    std::string required(const char* name) const {
        const std::string value = option(name);
        if (value.empty()) {
            throw std::runtime_error("--" + std::string(name) + " is missing");
        }
        return value;
    }

private:
    QCommandLineParser parser_;
};

std::string fact(const BundleInfo& info, const char* key) {
    auto value = info.string(key);
    if (!value || value->empty()) {
        throw std::runtime_error("the program's fernhollow.json has no " + std::string(key));
    }
    return *value;
}

void makeKeys(const CommandLine& line) {
    line.expectWords(2);
    std::puts(SigningKey::create(line.word(1)).publicKey().c_str());
}

void signPackage(const CommandLine& line) {
    line.expectWords(2);
    const std::string package = readWhole(line.word(1));
    const std::string signature = SigningKey::read(line.required("key")).sign(package);
    std::printf("fernhollow:edSignature=\"%s\" length=\"%zu\"\n", signature.c_str(), package.size());
}

void enterIntoFeed(const CommandLine& line) {
    line.expectWords(3);
    const BundleInfo info = BundleInfo::read(line.required("program"));
    Release release;
    release.package = line.word(1);
    release.feedUrl = fact(info, "UpdateFeedURL");
    release.publicKey = fact(info, "UpdatePublicKey");
    AppcastItem& item = release.item;
    item.version = line.option("version", fact(info, "CFBundleVersion"));
    item.displayVersion = line.option("short-version", fact(info, "CFBundleShortVersionString"));
    item.title = line.option("title", "Fernhollow " + item.displayVersion);
    item.link = line.option("link");
    item.channel = line.option("channel");
    item.operatingSystem = "linux";
    item.packageType = line.required("package-type");
    item.minimumSystemVersion = line.option("minimum-system-version");
    item.url = line.required("url");
    if (item.packageType != "appimage" && item.packageType != "deb") {
        throw std::runtime_error("--package-type is appimage or deb");
    }
    if (const std::string notes = line.option("notes"); !notes.empty()) {
        // XML ends each line with a line feed.
        item.releaseNotes = QString::fromStdString(readWhole(notes))
                                .replace(QStringLiteral("\r\n"), QStringLiteral("\n"))
                                .trimmed()
                                .toStdString();
    }
    publish(std::move(release), SigningKey::read(line.required("key")), line.word(2));
}

int run(const QStringList& arguments) {
    if (arguments.size() < 2 || arguments[1] == u"--help" || arguments[1] == u"-h") {
        std::fputs(usage, stdout);
        return arguments.size() < 2 ? EXIT_FAILURE : EXIT_SUCCESS;
    }
    const CommandLine line(arguments);
    const std::string command = line.word(0);
    if (command == "keys") {
        makeKeys(line);
    } else if (command == "sign") {
        signPackage(line);
    } else if (command == "feed") {
        enterIntoFeed(line);
    } else {
        throw std::runtime_error("no command '" + command + "'; see --help");
    }
    return EXIT_SUCCESS;
}

} // namespace
} // namespace fernhollow

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    try {
        return fernhollow::run(QCoreApplication::arguments());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "fernhollow-release: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
