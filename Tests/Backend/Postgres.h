#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <pqxx/pqxx>
#include <stdexcept>
#include <string>

namespace fernhollow::backend::tests {

/// The tests' own PostgreSQL with the migrations applied, one for the whole run. What an interrupted run
/// left behind is removed first.
class Postgres : public testing::Environment {
public:
    void SetUp() override {
        run("remove");
        start();
    }
    void TearDown() override { run("remove"); }

    static void start() {
        const auto lines = run("start");
        const auto end = lines.find('\n');
        owner = lines.substr(0, end);
        authenticator = lines.substr(end + 1, lines.find('\n', end + 1) - end - 1);
    }
    static void stop() { run("stop"); }

    /// As the owner, who is bound by nothing.
    static void execute(const std::string& sql) {
        pqxx::connection connection(owner);
        pqxx::nontransaction(connection).exec(sql);
    }
    static std::string value(const std::string& sql) {
        pqxx::connection connection(owner);
        return pqxx::nontransaction(connection).exec1(sql)[0].as<std::string>("null");
    }

    static inline std::string owner;
    static inline std::string authenticator;

private:
    static std::string run(const std::string& command) {
        const auto line =
            std::string("'" POSTGRES_SCRIPT "' ") + command + " '" POSTGRES_FOLDER "' 2>/dev/null";
        FILE* pipe = popen(line.c_str(), "r");
        std::string output;
        std::array<char, 512> part{};
        while (pipe && std::fgets(part.data(), part.size(), pipe)) {
            output += part.data();
        }
        if (!pipe || pclose(pipe) != 0) {
            throw std::runtime_error("failed: " + line);
        }
        return output;
    }
};

} // namespace fernhollow::backend::tests
