#include "Backend/RunningBackend.h"
#include "local/Descriptor.h"

#include <csignal>
#include <sys/wait.h>

namespace fernhollow::backend::tests {

namespace {

using namespace std::chrono_literals;

/// The program itself as a child process; everything it prints is read through one pipe.
class Program {
public:
    explicit Program(std::vector<std::string> arguments) {
        int ends[2];
        EXPECT_EQ(pipe(ends), 0);
        output_ = Descriptor(ends[0]);
        arguments.insert(arguments.begin(), BACKEND_PROGRAM);
        std::vector<char*> pointers;
        for (auto& argument : arguments) {
            pointers.push_back(argument.data());
        }
        pointers.push_back(nullptr);
        process_ = fork();
        if (process_ == 0) {
            dup2(ends[1], 1);
            dup2(ends[1], 2);
            execv(pointers.front(), pointers.data());
            _exit(127);
        }
        close(ends[1]);
    }
    ~Program() {
        if (process_ > 0) {
            kill(process_, SIGKILL);
            waitpid(process_, nullptr, 0);
        }
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// The next line without its end; nothing after the last.
    std::string line() {
        std::string text;
        char c = 0;
        while (read(output_.get(), &c, 1) == 1 && c != '\n') {
            text += c;
        }
        return text;
    }

    void signal(int number) const { kill(process_, number); }

    /// The exit status, once it has ended.
    int status() {
        int state = 0;
        waitpid(process_, &state, 0);
        process_ = 0;
        return WIFEXITED(state) ? WEXITSTATUS(state) : -1;
    }

private:
    Descriptor output_;
    pid_t process_ = 0;
};

int portIn(const std::string& line) {
    return std::stoi(line.substr(line.rfind(':') + 1));
}

} // namespace

TEST(Program, SaysInOneLineWhyItCannotServe) {
    const RunningBackend other;
    const auto taken = std::to_string(other.port());
    struct Case {
        std::vector<std::string> arguments;
        int status;
        const char* sentence;
    };
    const Case cases[] = {
        {{}, 2, "--database is missing"},
        {{"--database"}, 2, "--database takes a value"},
        {{"--database", "x", "--port", "70000"}, 2, "--port takes a number from 0 to 65535"},
        {{"--database", "x", "--secret", ""}, 2, "--secret must not be empty"},
        {{"--faster"}, 2, "unknown argument --faster"},
        {{"--database", "host=/nowhere user=x", "--port", "0"}, 1, "the database cannot be reached: "},
        {{"--database", "what is this", "--port", "0"}, 1, "the database cannot be reached: "},
        {{"--database", Postgres::authenticator, "--port", taken},
         1,
         "cannot be had: Address already in use"},
    };
    for (const auto& [arguments, status, sentence] : cases) {
        Program program(arguments);
        EXPECT_THAT(program.line(), testing::HasSubstr(sentence));
        EXPECT_EQ(program.line(), "") << sentence;
        EXPECT_EQ(program.status(), status) << sentence;
    }
}

TEST(Program, EndsWithinASecondWhateverItsClientsDo) {
    for (const int number : {SIGTERM, SIGINT}) {
        Program program({"--database", Postgres::authenticator, "--port", "0"});
        const int port = portIn(program.line());
        const auto listDevices = [&](httplib::Client& client) {
            const auto answer = client.Post("/rest/v1/rpc/get_account_devices", clientHeaders(),
                                            R"({"p_email":"x"})", "application/json");
            return answer ? answer->body : "";
        };
        httplib::Client idle("127.0.0.1", port);
        idle.set_keep_alive(true);
        EXPECT_EQ(listDevices(idle), "[]");

        pqxx::connection owner(Postgres::owner);
        pqxx::work lock(owner);
        lock.exec("lock table public.devices in access exclusive mode");
        std::thread waiting([&] {
            httplib::Client client("127.0.0.1", port);
            EXPECT_EQ(listDevices(client), "");
        });
        const auto waiters = "select count(*) from pg_locks where not granted";
        const auto limit = std::chrono::steady_clock::now() + 10s;
        while (Postgres::value(waiters) == "0" && std::chrono::steady_clock::now() < limit) {
        }
        const auto asked = std::chrono::steady_clock::now();
        program.signal(number);
        EXPECT_EQ(program.status(), 0);
        EXPECT_LT(std::chrono::steady_clock::now() - asked, 2s)
            << "half a second, and what a busy machine adds";
        waiting.join();
    }
}

TEST(Program, LogsNoAddress) {
    Program program({"--database", Postgres::authenticator, "--port", "0", "--verbose"});
    httplib::Client client("127.0.0.1", portIn(program.line()));
    client.Get("/rest/v1/device_day_counts?customer_email=eq.ana@x.example", clientHeaders());
    client.Get("/rest/v1/ana@x.example", clientHeaders());
    EXPECT_THAT(program.line(), testing::StartsWith("GET /rest/v1/device_day_counts "));
    EXPECT_THAT(program.line(), testing::StartsWith("GET (another path) 404"));
}

} // namespace fernhollow::backend::tests
