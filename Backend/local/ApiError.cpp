#include "local/ApiError.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <pqxx/except>

namespace fernhollow::backend {

namespace {

struct StatusRule {
    std::string_view prefix;
    int status;
};

// The first rule that fits counts, so exact codes stand before their class.
constexpr std::array rules = std::to_array<StatusRule>({
    {"23503", 409}, {"23505", 409}, {"25006", 405}, {"42883", 404}, {"42P01", 404}, {"42P17", 500},
    {"53400", 500}, {"57P01", 503}, {"57P02", 503}, {"57P03", 503}, {"P0001", 400}, {"08", 503},
    {"09", 500},    {"0L", 403},    {"0P", 403},    {"25", 500},    {"28", 403},    {"2D", 500},
    {"38", 500},    {"39", 500},    {"3B", 500},    {"40", 500},    {"53", 503},    {"54", 500},
    {"55", 500},    {"57", 500},    {"58", 500},    {"F0", 500},    {"HV", 500},    {"P0", 500},
    {"XX", 500},
});

/// The parts of an error as libpq writes it when it is verbose: "ERROR:  42501: ...", then "DETAIL:  ...",
/// "HINT:  ..." and others, each at the start of a line.
struct ErrorText {
    std::string code;
    std::string message;
    std::optional<std::string> details;
    std::optional<std::string> hint;

    explicit ErrorText(std::string_view text) {
        constexpr std::string_view afterSeverity = ":  ";
        const auto severity = text.find(afterSeverity);
        text.remove_prefix(severity == std::string_view::npos ? 0 : severity + afterSeverity.size());
        if (text.size() > 7 && text.substr(5, 2) == ": ") {
            code = text.substr(0, 5);
            text.remove_prefix(7);
        }
        std::string ignored;
        auto* part = &message;
        while (!text.empty()) {
            const auto end = text.find('\n');
            auto line = text.substr(0, end);
            text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
            if (beginsPart(line, "DETAIL:  ")) {
                part = &details.emplace();
            } else if (beginsPart(line, "HINT:  ")) {
                part = &hint.emplace();
            } else if (std::ranges::any_of(others, [&](auto other) { return line.starts_with(other); })) {
                part = &ignored;
            }
            part->append(part->empty() ? "" : "\n").append(line);
        }
    }

private:
    static constexpr std::array<std::string_view, 9> others = {
        "CONTEXT:  ",     "QUERY:  ",         "LINE ",
        "LOCATION:  ",    "SCHEMA NAME:  ",   "TABLE NAME:  ",
        "COLUMN NAME:  ", "DATATYPE NAME:  ", "CONSTRAINT NAME:  "};

    static bool beginsPart(std::string_view& line, std::string_view label) {
        const bool begins = line.starts_with(label);
        line.remove_prefix(begins ? label.size() : 0);
        return begins;
    }
};

nlohmann::json orNull(const std::optional<std::string>& text) {
    return text ? nlohmann::json(*text) : nlohmann::json();
}

} // namespace

ApiError::ApiError(int status, std::string code, const std::string& message, Optional details, Optional hint)
    : std::runtime_error(message), status_(status), code_(std::move(code)), details_(std::move(details)),
      hint_(std::move(hint)) {}

ApiError ApiError::fromDatabase(const pqxx::sql_error& error, bool isAnonymous) {
    ErrorText text(error.what());
    return {statusOfDatabaseError(text.code, isAnonymous), text.code, text.message, std::move(text.details),
            std::move(text.hint)};
}

ApiError ApiError::databaseAway() {
    return {503, "PGRST000", "Could not connect with the database. Retrying the connection."};
}

ApiError ApiError::badToken(const std::string& message) {
    return {401, "PGRST301", message};
}

ApiError ApiError::badQuery(const std::string& message, const std::string& details) {
    return {400, "PGRST100", message, details};
}

ApiError ApiError::badBody(const std::string& message) {
    return {400, "PGRST102", message};
}

Answer ApiError::answer() const {
    const nlohmann::json body = {
        {"code", code_}, {"details", orNull(details_)}, {"hint", orNull(hint_)}, {"message", what()}};
    // What a client sent may come back in the message, whatever bytes it is made of.
    constexpr auto replace = nlohmann::json::error_handler_t::replace;
    Answer answer{status_, body.dump(-1, ' ', false, replace), {}};
    if (status_ == 401) {
        answer.headers.emplace_back("WWW-Authenticate",
                                    code_ == "PGRST301" ? "Bearer error=\"invalid_token\"" : "Bearer");
    }
    return answer;
}

int statusOfDatabaseError(std::string_view sqlState, bool isAnonymous) {
    if (sqlState == "42501") {
        return isAnonymous ? 401 : 403;
    }
    const auto rule = std::ranges::find_if(
        rules, [&](const StatusRule& candidate) { return sqlState.starts_with(candidate.prefix); });
    return rule != rules.end() ? rule->status : 400;
}

} // namespace fernhollow::backend
