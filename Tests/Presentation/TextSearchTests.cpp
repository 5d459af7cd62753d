#include "Presentation/TextSearch.h"
#include "Support/Testing.h"

namespace fernhollow::tests {
namespace {

TEST(NamesSearched, HoldTheTextInAnyCase) {
    struct Case {
        const char *locale, *text, *name;
        bool isFound;
    };
    const EnvironmentGuard all("LC_ALL", std::nullopt);
    for (const auto& [locale, text, name, isFound] :
         {Case{"en_US.UTF-8", "", "Firefox", true}, Case{"en_US.UTF-8", "FOX", "Firefox", true},
          Case{"en_US.UTF-8", "foxes", "Firefox", false}, Case{"en_US.UTF-8", "I", "Visual", true},
          Case{"tr_TR.UTF-8", "I", "Visual", false}, Case{"tr_TR.UTF-8", "İ", "Visual", true},
          Case{"tr_TR.UTF-8", "ışık", "IŞIK", true}, Case{"az_AZ.UTF-8", "i", "İş", true},
          Case{"de_DE.UTF-8", "GROSS", "Großschreibung", true}, Case{"de_DE.UTF-8", "ä", "ÄNDERUNGEN", true},
          Case{"de_DE.UTF-8", "a", "Änderungen", false}, Case{"el_GR.UTF-8", "ΟΔΟΣ", "οδος", true},
          Case{"cs_CZ.UTF-8", "c", "Chrome", true},             // there "ch" is a letter of its own
          Case{"en_US.UTF-8", "caf\u00e9", "CAFE\u0301", true}, // composed and not
          Case{"en_US.UTF-8", "cafe", "Cafe\u0301", false}, Case{"en_US.UTF-8", "(", "Editor (2)", true},
          Case{"ja_JP.UTF-8", "エディタ", "テキストエディタ", true}}) {
        const EnvironmentGuard letters("LC_CTYPE", locale);
        TextSearch search;
        search.setText(text);
        EXPECT_EQ(search.isIn(name), isFound) << text << " in " << name << ", " << locale;
    }
}

} // namespace
} // namespace fernhollow::tests
