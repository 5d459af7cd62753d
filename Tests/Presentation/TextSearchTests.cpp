#include "Presentation/TextSearch.h"
#include "Support/TemporaryHome.h"

#include <gmock/gmock.h>

namespace fernhollow {
namespace {

struct SearchCase {
    const char* locale;
    const char* text;
    const char* name;
    bool isFound;
};

class NamesSearched : public testing::TestWithParam<SearchCase> {};

TEST_P(NamesSearched, HoldTheTextInAnyCase) {
    const tests::EnvironmentGuard all("LC_ALL", std::nullopt);
    const tests::EnvironmentGuard letters("LC_CTYPE", GetParam().locale);
    TextSearch search;
    search.setText(GetParam().text);
    EXPECT_EQ(search.isIn(GetParam().name), GetParam().isFound);
}

INSTANTIATE_TEST_SUITE_P(
    Locales, NamesSearched,
    testing::Values(
        SearchCase{"en_US.UTF-8", "", "Firefox", true}, SearchCase{"en_US.UTF-8", "", "", true},
        SearchCase{"en_US.UTF-8", "FOX", "Firefox", true},
        SearchCase{"en_US.UTF-8", "foxes", "Firefox", false}, SearchCase{"en_US.UTF-8", "I", "Visual", true},
        SearchCase{"tr_TR.UTF-8", "I", "Visual", false}, SearchCase{"tr_TR.UTF-8", "İ", "Visual", true},
        SearchCase{"tr_TR.UTF-8", "ışık", "IŞIK", true}, SearchCase{"az_AZ.UTF-8", "i", "İş", true},
        SearchCase{"de_DE.UTF-8", "GROSS", "Großschreibung", true},
        SearchCase{"de_DE.UTF-8", "ä", "ÄNDERUNGEN", true},
        SearchCase{"de_DE.UTF-8", "a", "Änderungen", false}, SearchCase{"el_GR.UTF-8", "ΟΔΟΣ", "οδος", true},
        SearchCase{"cs_CZ.UTF-8", "c", "Chrome", true},             // there "ch" is a letter of its own
        SearchCase{"en_US.UTF-8", "caf\u00e9", "CAFE\u0301", true}, // composed and not
        SearchCase{"en_US.UTF-8", "cafe", "Cafe\u0301", false},
        SearchCase{"en_US.UTF-8", "(", "Editor (2)", true},
        SearchCase{"ja_JP.UTF-8", "エディタ", "テキストエディタ", true}));

} // namespace
} // namespace fernhollow
