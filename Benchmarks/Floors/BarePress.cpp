// The least that counting presses can cost: a RECORD client of libxcb that writes each press to a table.
// Arguments: the database, with our tables, and the day. Prints a line once it records, and on SIGTERM
// the number of presses that it has written.

#include "BareStatement.h"

#include <xcb/record.h>
#include <xcb/xcb.h>

#include <csignal>
#include <cstdint>
#include <ctime>
#include <unistd.h>

namespace {

using namespace fernhollow;

template<class T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

volatile std::sig_atomic_t presses = 0;

void printAndLeave(int) {
    char text[16] = {};
    std::size_t begin = sizeof(text);
    text[--begin] = '\n';
    for (auto left = presses; left > 0 || begin == sizeof(text) - 1; left /= 10) {
        text[--begin] = static_cast<char>('0' + left % 10);
    }
    [[maybe_unused]] const auto written = ::write(STDOUT_FILENO, text + begin, sizeof(text) - begin);
    ::_exit(EXIT_SUCCESS);
}

void writePress(sqlite3* db, const char* day) {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    bare::Statement(db, bare::incrementHourly)
        .bind(1, day)
        .bind(2, std::int64_t{local.tm_hour})
        .bind(3, std::int64_t{1})
        .bind(4, std::int64_t{now})
        .run();
    presses = presses + 1;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        return EXIT_FAILURE;
    }
    const auto db = bare::open(argv[1]);
    std::signal(SIGTERM, printAndLeave);

    auto* control = xcb_connect(nullptr, nullptr);
    auto* data = xcb_connect(nullptr, nullptr);
    const xcb_record_client_spec_t everyone = XCB_RECORD_CS_ALL_CLIENTS;
    xcb_record_range_t range{};
    range.device_events = {XCB_KEY_PRESS, XCB_KEY_PRESS};
    const auto context = xcb_generate_id(control);
    const auto created = xcb_record_create_context_checked(control, context, 0, 1, 1, &everyone, &range);
    if (const Reply<xcb_generic_error_t> error(xcb_request_check(control, created), &std::free); error) {
        return EXIT_FAILURE;
    }
    const auto enabled = xcb_record_enable_context(data, context);
    while (const Reply<xcb_record_enable_context_reply_t> reply{
        xcb_record_enable_context_reply(data, enabled, nullptr), &std::free}) {
        constexpr int fromServer = 0;
        constexpr int startOfData = 4;
        if (reply->category == startOfData) {
            std::puts("recording");
            std::fflush(stdout);
        } else if (reply->category == fromServer) {
            for (int size = xcb_record_enable_context_data_length(reply.get()); size >= 32; size -= 32) {
                writePress(db.get(), argv[2]);
            }
        }
    }
    return EXIT_FAILURE;
}
