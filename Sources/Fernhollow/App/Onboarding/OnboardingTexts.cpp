#include "App/Onboarding/OnboardingTexts.h"

namespace fernhollow {
namespace {

using namespace Qt::StringLiterals;

OnboardingTexts english() {
    return {
        .welcomeTitle = u"Welcome to Fernhollow"_s,
        .welcomeSubtitle = u"Let's start your productivity journey"_s,
        .dayOneTitle = u"Today is Day 1"_s,
        .dayOneExplanation = u"Fernhollow doesn't import historical data from your Mac. You start from zero, "
                             u"with a blank page. From now on, every keystroke you type will be counted."_s,
        .dayOneHighlight = u"Your numbers will grow starting today!"_s,
        .howItWorksTitle = u"How it works"_s,
        .features = {{{u"Counter in the menu bar"_s, u"See your progress in real-time"_s},
                      {u"Detailed statistics"_s, u"By day, hour, and app"_s},
                      {u"Cloud sync"_s, u"Your data across up to 10 devices"_s}}},
        .readyTitle = u"All set!"_s,
        .readySubtitle = u"Start typing and watch your numbers grow"_s,
        .privacyNote = u"Total privacy — we count keystrokes, never what you type."_s,
        .skip = u"Skip"_s,
        .previous = u"Previous"_s,
        .next = u"Next"_s,
        .getStarted = u"Get Started"_s,
    };
}

OnboardingTexts portuguese() {
    return {
        .welcomeTitle = u"Bem-vindo ao Fernhollow"_s,
        .welcomeSubtitle = u"Vamos começar sua jornada de produtividade"_s,
        .dayOneTitle = u"Hoje é o Dia 1"_s,
        .dayOneExplanation =
            u"O Fernhollow não importa dados históricos do seu Mac. Você começa do zero, com "
            u"uma página em branco. A partir de agora, cada tecla que você digitar será "
            u"contada."_s,
        .dayOneHighlight = u"Seus números vão crescer a partir de hoje!"_s,
        .howItWorksTitle = u"Como funciona"_s,
        .features = {{{u"Contador na barra de menus"_s, u"Veja seu progresso em tempo real"_s},
                      {u"Estatísticas detalhadas"_s, u"Por dia, hora e aplicativo"_s},
                      {u"Sincronização na nuvem"_s, u"Seus dados em até 10 dispositivos"_s}}},
        .readyTitle = u"Tudo pronto!"_s,
        .readySubtitle = u"Comece a digitar e veja seus números crescerem"_s,
        .privacyNote = u"Privacidade total — contamos quantas teclas, nunca o que você digita."_s,
        .skip = u"Pular"_s,
        .previous = u"Anterior"_s,
        .next = u"Próximo"_s,
        .getStarted = u"Começar"_s,
    };
}

} // namespace

const OnboardingTexts& OnboardingTexts::in(AppLanguage language) {
    static const OnboardingTexts inEnglish = english();
    static const OnboardingTexts inPortuguese = portuguese();
    return language == AppLanguage::portuguese ? inPortuguese : inEnglish;
}

} // namespace fernhollow
