#pragma once

#include "App/Lists/AppListView.h"
#include "Model/ModelFixture.h"

#include <QTest>

#include <string>
#include <vector>

namespace fernhollow::tests {

/// Somebody who typed on 2026-03-02, in two applications, and types today from nine o'clock.
class AppListFixture : public ModelFixture {
protected:
    AppListFixture() {
        DailyCountsStore store(DailyCountsStore::urlForAccount("ana@example.com"));
        await(store.registerApp("org.mail", "Mail", 0));
        await(store.incrementAppHourly(DayKey("2026-03-02"), 9, "org.mail", 1500, 0));
        await(store.incrementAppHourly(DayKey("2026-03-02"), 17, "org.b", 500, 0));
        start();
        signIn("ana@example.com");
        refreshHistory();
    }

    /// As after a download of nothing.
    void refreshHistory() {
        refresh();
        tasks_.beginWaiting();
        await(model_->appTracker().updateLast30DaysAppDaily(std::make_shared<AppDailyCache>()));
    }

    static Instant march(int day, int hour = 12) {
        return at("UTC", {.year = 2026, .month = 3, .day = day, .hour = hour});
    }

    /// What a screen reader reads of the rows.
    static std::vector<std::string> rows(const QWidget& view) {
        const auto* model = view.findChild<AppListView*>()->model();
        std::vector<std::string> rows;
        for (int row = 0; row < model->rowCount(); ++row) {
            rows.push_back(model->index(row, 0).data(Qt::AccessibleTextRole).toString().toStdString());
        }
        return rows;
    }
};

} // namespace fernhollow::tests
