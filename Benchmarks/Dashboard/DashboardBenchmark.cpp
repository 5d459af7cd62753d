// Measures the main thread's time to update the dashboard from the model and to paint it, with 25
// applications and 30 days: after a press, and after a change of the whole history. Arguments: those of the
// benchmark library.

#include "App/Dashboard/ProductivityDashboard.h"
#include "App/Widgets/Theme.h"
#include "Model/AccountManager.h"
#include "Model/AppModel.h"
#include "Support/TaskScope.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QTimer>
#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <ctime>

namespace {

using namespace fernhollow;

constexpr int applications = 25;
constexpr int days = 30;

double threadSeconds() {
    timespec now{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

std::string identifier(int application) {
    return "org.example.application" + std::to_string(application);
}

/// A keyboard whose presses the benchmark makes.
struct Keyboard final : KeyPressMonitor {
    bool start() override { return true; }
    void stop() override {}
    Handlers handlers;
};

/// A month of counts; each `seed` gives a different one.
std::shared_ptr<const AppDailyCache> history(int seed) {
    const auto calendar = Calendar::autoupdatingCurrent();
    auto month = std::make_shared<AppDailyCache>();
    for (int age = 1; age < days; ++age) {
        const DayKey day(calendar.addingDays(SystemClock().now(), -age).value(), calendar);
        for (int application = 0; application < applications; ++application) {
            const std::int64_t count = 100 + application * 37 + (age * seed) % 91;
            (*month)[day.rawValue][identifier(application)] = {"Application", count};
        }
    }
    return month;
}

class Stage : public QObject {
public:
    Stage() {
        model_ = AppModel::create({clock_, tasks_, account_}, [this](KeyPressMonitor::Handlers handlers) {
            auto keyboard = std::make_unique<Keyboard>();
            keyboard->handlers = std::move(handlers);
            keyboard_ = keyboard.get();
            return keyboard;
        });
        for (int application = 0; application < applications; ++application) {
            press(application);
        }
        view_ = std::make_unique<ProductivityDashboard>(model_, clock_);
        view_->resize(420, 900);
        view_->show();
        for (QWidget* child : view_->findChildren<QWidget*>()) {
            child->installEventFilter(this);
        }
        rest();
    }

    ~Stage() override {
        view_.reset();
        model_->shutDown(std::chrono::seconds(1));
        tasks_.stop();
    }

    void press(int application) {
        keyboard_->handlers.onKeyPress(
            {identifier(application), "Application " + std::to_string(application)});
    }

    void publish(const std::shared_ptr<const AppDailyCache>& month) {
        const auto task = model_->appTracker().updateLast30DaysAppDaily(month);
    }

    void untilPainted() {
        isPainted_ = false;
        while (!isPainted_) {
            QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        }
        rest();
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        isPainted_ = isPainted_ || event->type() == QEvent::Paint;
        return false;
    }

private:
    /// Runs the event loop until the work that is due in the next frames is done.
    static void rest() {
        bool isOver = false;
        QTimer::singleShot(std::chrono::milliseconds(50), qApp, [&isOver] { isOver = true; });
        while (!isOver) {
            QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        }
    }

    SystemClock clock_;
    TaskScope tasks_;
    AccountManager account_{clock_};
    Keyboard* keyboard_ = nullptr;
    std::shared_ptr<AppModel> model_;
    std::unique_ptr<ProductivityDashboard> view_;
    bool isPainted_ = false;
};

void afterAPress(benchmark::State& state) {
    Stage stage;
    int presses = 0;
    for (auto _ : state) {
        const double before = threadSeconds();
        stage.press(++presses % applications);
        stage.untilPainted();
        state.SetIterationTime(threadSeconds() - before);
    }
}

void afterAnotherHistory(benchmark::State& state) {
    Stage stage;
    const std::array months{history(7), history(11)};
    std::size_t turn = 0;
    for (auto _ : state) {
        const double before = threadSeconds();
        stage.publish(months.at(++turn % months.size()));
        stage.untilPainted();
        state.SetIterationTime(threadSeconds() - before);
    }
}

BENCHMARK(afterAPress)->UseManualTime()->Iterations(40)->Unit(benchmark::kMillisecond);
BENCHMARK(afterAnotherHistory)->UseManualTime()->Iterations(40)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    const QTemporaryDir home;
    qputenv("HOME", home.path().toUtf8());
    for (const char* folder : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME"}) {
        qputenv(folder, home.path().toUtf8());
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    benchmark::Initialize(&argc, argv);
    const QApplication application(argc, argv);
    Theme::applyDark();
    benchmark::RunSpecifiedBenchmarks();
}
