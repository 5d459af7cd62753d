#include "Backend/RunningBackend.h"
#include "local/AccessToken.h"
#include "local/ApiError.h"

namespace fernhollow::backend::tests {

namespace {

const std::chrono::system_clock::time_point noon2026{std::chrono::seconds(1'767'268'800)};
constexpr int noon = 1'767'268'800;
const json anonymous = {{"role", "anon"}};

std::string reasonOfRefusal(const std::string& text) {
    try {
        verifyToken(text, secret, noon2026);
        return "accepted";
    } catch (const ApiError& refusal) {
        EXPECT_EQ(refusal.answer().status, 401);
        return refusal.what();
    }
}

std::string withoutLast(std::string text) {
    text.pop_back();
    return text;
}

} // namespace

TEST(Token, IsAcceptedWhenSignedWithTheSecretAndInItsTime) {
    const auto identity = verifyToken(DEFAULT_KEY, secret, noon2026);
    EXPECT_EQ(identity.role, "anon");
    EXPECT_EQ(json::parse(identity.claims)["iss"], "fernhollow");
    EXPECT_EQ(verifyToken(token(json::object()), secret, noon2026).role, "anon");
    EXPECT_EQ(reasonOfRefusal(token({{"exp", noon + 60}, {"nbf", noon - 60}})), "accepted");
    EXPECT_EQ(reasonOfRefusal(token({{"exp", noon - 20}, {"nbf", noon + 20}})), "accepted")
        << "clocks differ";
}

TEST(Token, IsRefusedOtherwise) {
    const auto good = token(anonymous);
    const auto unsignedText = base64Url(R"({"alg":"none"})") + "." + base64Url(anonymous.dump()) + ".";
    const std::pair<std::string, std::string> cases[] = {
        {"", "JWT must have three parts"},
        {"a.b", "JWT must have three parts"},
        {good + ".x", "JWT must have three parts"},
        {"...", "JWT must have three parts"},
        {"..", "JWT cannot be decoded"},
        {"!!!.x.y", "JWT cannot be decoded"},
        {unsignedText, "JWT must be signed with HS256"},
        {token(anonymous, {{"alg", "none"}}), "JWT must be signed with HS256"},
        {token(anonymous, {{"alg", "hs256"}}), "JWT must be signed with HS256"},
        {token(anonymous, {{"alg", "RS256"}}), "JWT must be signed with HS256"},
        {token(anonymous, {{"typ", "JWT"}}), "JWT must be signed with HS256"},
        {token(anonymous, {{"alg", "HS256"}}, "another secret"), "JWT has a wrong signature"},
        {token(anonymous, {{"alg", "HS256"}}, ""), "JWT has a wrong signature"},
        {withoutLast(good), "JWT has a wrong signature"},
        {good.substr(0, good.rfind('.') + 1), "JWT has a wrong signature"},
        {token(json::array()), "JWT cannot be decoded"},
        {token({{"exp", noon - 60}}), "JWT expired"},
        {token({{"exp", "tomorrow"}}), "JWT claims cannot be read"},
        {token({{"nbf", noon + 60}}), "JWT not yet valid"},
        {token({{"role", 7}}), "JWT claims cannot be read"},
    };
    for (const auto& [text, reason] : cases) {
        EXPECT_EQ(reasonOfRefusal(text), reason) << text;
    }
}

TEST(Token, DecidesWhoARequestIs) {
    const RunningBackend backend;
    const auto ask = [&](httplib::Headers headers) {
        const auto answer =
            backend.client().Post("/rest/v1/rpc/get_account_today_total", headers,
                                  R"({"p_email":"x","p_day":"2026-03-05"})", "application/json");
        const auto body = json::parse(answer->body);
        return std::to_string(answer->status) + " " + (body.is_object() ? body.value("code", "") : "");
    };
    const std::string key = DEFAULT_KEY;
    const auto as = [&](const char* role) { return "Bearer " + token({{"role", role}}); };
    EXPECT_EQ(ask({}), "401 ");
    EXPECT_EQ(ask({{"Authorization", "Bearer " + key}}), "401 ") << "no key for the gateway";
    EXPECT_EQ(ask({{"apikey", "wrong"}, {"Authorization", "Bearer " + key}}), "401 PGRST301");
    EXPECT_EQ(ask({{"apikey", key}, {"Authorization", "Bearer wrong"}}), "401 PGRST301");
    EXPECT_EQ(ask({{"apikey", key}}), "200 ") << "the key stands in for a token";
    EXPECT_EQ(ask({{"apikey", key}, {"Authorization", as("anon")}}), "200 ");
    EXPECT_EQ(ask({{"apikey", key}, {"Authorization", as("fernhollow")}}), "403 42501");
    EXPECT_EQ(ask({{"apikey", key}, {"Authorization", as("nobody")}}), "400 22023");
    EXPECT_EQ(ask({{"apikey", key}, {"Authorization", as("anon'; reset role; --")}}), "400 22023");
}

} // namespace fernhollow::backend::tests
