#include "Backend/RunningBackend.h"

namespace fernhollow::backend::tests {

namespace {

/// Tables and functions of every shape, so that nothing works for Fernhollow's own alone.
class Requests : public testing::Test {
protected:
    static void SetUpTestSuite() {
        Postgres::execute(R"(
            create table public.things (id bigint primary key, "a label" text not null default 'none', owner text);
            create function public.nothing() returns void language sql as '';
            create function public.no_value() returns text language sql as 'select null::text';
            create function public.names() returns setof text language sql as $$ values ('b'), ('a') $$;
            create function public.numbers(up_to int) returns table (n bigint) language sql
                as $$ select generate_series(1, up_to) $$;
            create function public.one_thing(p_id bigint) returns public.things language sql
                as $$ select p_id, 'made', 'me' $$;
            create function public.greet("Who" text default 'you', loud boolean default false) returns text
                language sql as $$ select case when loud then upper("Who") else "Who" end $$;
            create function public.twice(a int, b int default 0) returns int language sql as 'select a';
            create function public.twice(a int, c text default '') returns int language sql as 'select a';
            create function public.whoami() returns json language sql as $$
                select json_build_array(current_user, current_setting('request.jwt.claims')::json ->> 'ref') $$;
            create function public.wait(seconds float) returns void language sql as 'select pg_sleep(seconds)';
            create function public.hidden() returns int language sql as 'select 1';
            grant select, insert, update on public.things to anon;
            grant execute on all functions in schema public to anon;
            revoke execute on function public.hidden() from anon;
        )");
    }
    static void TearDownTestSuite() {
        Postgres::execute(
            "drop function one_thing; drop table things; drop function nothing, no_value, names, "
            "numbers, greet, twice(int, int), twice(int, text), whoami, wait, hidden");
    }
    void SetUp() override { Postgres::execute("truncate public.things"); }

    RunningBackend backend{{}, std::chrono::milliseconds(300)};
};

} // namespace

TEST_F(Requests, CallFunctionsOfEveryShape) {
    struct Case {
        std::string function;
        std::string body;
        int status;
        std::string answer;
    };
    const Case cases[] = {
        {"nothing", "{}", 204, ""},
        {"no_value", "", 200, "null"},
        {"names", "{}", 200, R"(["b", "a"])"},
        {"numbers", R"({"up_to": 2})", 200, R"([{"n":1}, {"n":2}])"},
        {"numbers", R"({"up_to": 0})", 200, "[]"},
        {"one_thing", R"({"p_id": 9007199254740993})", 200,
         R"({"id":9007199254740993,"a label":"made","owner":"me"})"},
        {"greet", "{}", 200, R"("you")"},
        {"greet", R"({"Who": "\"é\"\n", "loud": true})", 200, R"("\"É\"\n")"},
        {"whoami", "{}", 200, R"(["anon", "fernhollowlocaldev"])"},
    };
    for (const auto& [function, body, status, expected] : cases) {
        const auto answer = backend.post("rpc/" + function, body);
        EXPECT_EQ(answer->status, status) << function << answer->body;
        const auto json = [](const std::string& text) { return json::parse(text, nullptr, false); };
        EXPECT_TRUE(answer->body == expected || json(answer->body) == json(expected))
            << function << answer->body;
    }
}

TEST_F(Requests, WriteRowsOneByOneOrTogether) {
    const auto things = [] {
        return Postgres::value(
            "select string_agg(id || ' ' || \"a label\", ',' order by id) from public.things");
    };
    const httplib::Headers merge = {{"Prefer", "return=minimal, resolution=merge-duplicates"}};
    const httplib::Headers ignore = {{"Prefer", "resolution=ignore-duplicates"}};
    EXPECT_EQ(
        backend.post("things", R"([{"id":1,"a label":"x"},{"id":9007199254740993,"a label":"y"}])")->status,
        201);
    EXPECT_EQ(things(), "1 x,9007199254740993 y");
    EXPECT_EQ(backend.post("things", R"({"id":1})")->status, 409);
    EXPECT_EQ(backend.post("things?on_conflict=id", R"({"id":1,"a label":"z"})", merge)->status, 201);
    EXPECT_EQ(backend.post("things", R"({"id":1,"owner":"me"})", merge)->status, 201) << "by the primary key";
    EXPECT_EQ(backend.post("things", R"([{"id":2},{"id":1}])", ignore)->status, 201);
    EXPECT_EQ(things(), "1 z,2 none,9007199254740993 y") << "columns that were not sent keep their values";
    EXPECT_EQ(backend.post("things", R"([{"id":3},{"id":2}])")->status, 409);
    EXPECT_EQ(backend.post("things", "[]")->status, 201);
    EXPECT_EQ(things(), "1 z,2 none,9007199254740993 y") << "all rows or none";
    EXPECT_EQ(backend.get("things?select=id,a%20label&order=id.desc&limit=2&offset=1")->body,
              "[{\"id\":2,\"a label\":\"none\"}, \n {\"id\":1,\"a label\":\"z\"}]");
}

TEST_F(Requests, ThatAreWrongAreExplainedAndDoNoHarm) {
    struct Case {
        std::string method;
        std::string target;
        std::string body;
        int status;
        std::string code;
    };
    const std::string deep(20'000, '[');
    const Case cases[] = {
        {"POST", "things", "", 400, "PGRST102"},
        {"POST", "things", R"({"id":)", 400, "PGRST102"},
        {"POST", "things", R"({"id":1} x)", 400, "PGRST102"},
        {"POST", "things", "7", 400, "PGRST102"},
        {"POST", "things", "[1]", 400, "PGRST102"},
        {"POST", "things", R"([{"id":1},{"owner":"x"}])", 400, "PGRST102"},
        {"POST", "things", deep, 400, "PGRST102"},
        {"POST", "things", "{\"id\":1,\"owner\":\"\xff\"}", 400, "PGRST102"},
        {"POST", "things", R"({"id":1,"owner":"\u0000"})", 400, "22P05"},
        {"POST", "things", R"({"id":"one"})", 400, "22P02"},
        {"POST", "things", R"({"id":9223372036854775808})", 400, "22003"},
        {"POST", "things", R"({"id":1.5})", 400, "22P02"},
        {"POST", "things", R"({"id":null})", 400, "23502"},
        {"POST", "things", R"({"id":1,"price":2})", 400, "PGRST204"},
        {"POST", "things", R"({"id\") values (1); drop table public.things; --":1})", 400, "PGRST204"},
        {"POST", "things?on_conflict=owner", R"({"id":1})", 400, "42P10"},
        {"POST", "things?on_conflict=id)%20do%20nothing--", R"({"id":1})", 400, "42703"},
        {"POST", "nowhere", "{}", 404, "42P01"},
        {"POST", "rpc/nowhere", "{}", 404, "PGRST202"},
        {"POST", "rpc/numbers", "{}", 404, "PGRST202"},
        {"POST", "rpc/numbers", R"({"up_to":1,"from":0})", 404, "PGRST202"},
        {"POST", "rpc/numbers", R"({"UP_TO":1})", 404, "PGRST202"},
        {"POST", "rpc/numbers", "[]", 400, "PGRST102"},
        {"POST", "rpc/twice", R"({"a":1})", 300, "PGRST203"},
        {"POST", "rpc/pg_sleep", R"({"seconds":9})", 404, "PGRST202"},
        {"POST", "rpc/hidden", "{}", 401, "42501"},
        {"POST", "rpc/wait", R"({"seconds":9})", 500, "57014"},
        {"GET", "rpc/nothing", "", 405, "PGRST101"},
        {"GET", "things?id=gt.1", "", 400, "PGRST100"},
        {"GET", "things?id=1", "", 400, "PGRST100"},
        {"GET", "things?id=not.eq.1", "", 400, "PGRST100"},
        {"GET", "things?or=(id.eq.1,id.eq.2)", "", 400, "PGRST100"},
        {"GET", "things?id=eq.one", "", 400, "22P02"},
        {"GET", "things?price=eq.1", "", 400, "42703"},
        {"GET", "things?id=eq.%zz", "", 400, "PGRST100"},
        {"GET", "things?id=eq.%4", "", 400, "PGRST100"},
        {"GET", "things?owner=eq.a%00b", "", 400, "PGRST100"},
        {"GET", "things?owner=eq.%ff", "", 400, "22021"},
        {"GET", "things?%ff=eq.1", "", 400, "PGRST100"},
        {"GET", "things?select=id::text", "", 400, "PGRST100"},
        {"GET", "things?select=\"id\"", "", 400, "PGRST100"},
        {"GET", "things?select=id%20from%20things;--", "", 400, "42703"},
        {"GET", "things?order=id.sideways", "", 400, "PGRST100"},
        {"GET", "things?limit=-1", "", 400, "PGRST100"},
        {"GET", "things%00x", "", 404, "PGRST125"},
        {"GET", "things/1", "", 404, "PGRST125"},
        {"GET", "", "", 404, "PGRST125"},
        {"GET", "pg_class", "", 404, "42P01"},
        {"GET", "things\"%3B%20drop%20table%20things", "", 404, "42P01"},
    };
    auto client = backend.client();
    for (const auto& [method, target, body, status, code] : cases) {
        const auto path = "/rest/v1/" + target;
        auto headers = clientHeaders();
        headers.emplace("Prefer", "resolution=merge-duplicates");
        const auto answer = method == "GET" ? client.Get(path, headers)
                                            : client.Post(path, headers, body, "application/json");
        auto what = method;
        what.append(" ").append(target).append(" ").append(body, 0, 80);
        ASSERT_TRUE(answer) << what;
        EXPECT_EQ(answer->status, status) << what << answer->body;
        const auto error = json::parse(answer->body, nullptr, false);
        ASSERT_TRUE(error.is_object()) << what << answer->body;
        EXPECT_EQ(error.value("code", ""), code) << what;
        EXPECT_TRUE(error.contains("message") && error.contains("details") && error.contains("hint")) << what;
    }
    EXPECT_EQ(client.Post("/rest/v1/things", clientHeaders(), R"({"id":1})", "text/csv")->status, 415);
    EXPECT_EQ(client.Get("/elsewhere", clientHeaders())->status, 404);
    EXPECT_EQ(Postgres::value("select count(*) from public.things"), "0");
}

TEST_F(Requests, FindWhatChangedMeanwhile) {
    EXPECT_EQ(backend.get("late")->status, 404);
    Postgres::execute("create table public.late (a int); grant all on public.late to anon");
    EXPECT_EQ(backend.post("late", R"({"a":1})")->status, 201);
    Postgres::execute("alter table public.late rename a to b");
    // Each of the server's connections has its own memory of the table.
    for (int i = 0; i < 16; ++i) {
        backend.post("late", R"({"a":1})");
    }
    EXPECT_EQ(backend.post("late", R"({"b":1})")->status, 201);
    Postgres::execute("drop table public.late");
}

} // namespace fernhollow::backend::tests
