// The parking code dialog over the shipped database (parkingspecs.db beside the program, every airline of
// data/parking/airlines.tsv): opening it, and typing a filter key by key, "Lufthansa" and then nine
// Backspaces, each key with the requery, the new rows in the grid and the repaint that follows.
//
//   build/bench/bench_parking
//
// One iteration of the filter benchmark is one key, so its time is the time per key. Runs on the offscreen
// platform unless QT_QPA_PLATFORM says otherwise. Reports the median of seven repetitions in wall time.

#include <algorithm>
#include <benchmark/benchmark.h>
#include <filesystem>

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTableView>

#include "core/dialogs.h"
#include "environment/programstate.h"
#include "parking/gui/frm_parkingcode.h"

namespace {

const QString DATABASE = QStringLiteral(FLEETWRIGHT_PARKING_DATABASE);
const QString TYPED = QStringLiteral("Lufthansa");

bool haveDatabase(benchmark::State &state)
{
    if (std::filesystem::exists(FLEETWRIGHT_PARKING_DATABASE))
        return true;
    state.SkipWithError("no parkingspecs.db beside the program");
    return false;
}

void BM_OpenDialog(benchmark::State &state)
{
    if (!haveDatabase(state))
        return;
    fleetwright::NeverAskDialogs dialogs;
    const fleetwright::ProgramState program;
    QLineEdit codes;
    for (auto _ : state) {
        fleetwright::frm_ParkingCode dialog(&codes, dialogs, program, DATABASE);
        dialog.show();
        QApplication::processEvents();
        benchmark::DoNotOptimize(dialog.MSHFlexGrid1()->model()->rowCount());
    }
    if (!dialogs.messages().empty())
        state.SkipWithError("the dialog showed a message");
}
BENCHMARK(BM_OpenDialog)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(5)
    ->Repetitions(7)
    ->ReportAggregatesOnly(true);

void pressKey(QLineEdit *box, int key, const QString &text)
{
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
    QApplication::sendEvent(box, &press);
    QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, text);
    QApplication::sendEvent(box, &release);
    QApplication::processEvents();
}

void BM_FilterKeyByKey(benchmark::State &state)
{
    if (!haveDatabase(state))
        return;
    fleetwright::NeverAskDialogs dialogs;
    const fleetwright::ProgramState program;
    QLineEdit codes;
    fleetwright::frm_ParkingCode dialog(&codes, dialogs, program, DATABASE);
    dialog.show();
    QApplication::processEvents();
    auto *filter = dialog.findChild<QLineEdit *>(QStringLiteral("txt_FilterParkingCodes"));
    filter->setFocus();
    const int all = dialog.MSHFlexGrid1()->model()->rowCount();

    qsizetype step = 0;
    int fewest = all;
    for (auto _ : state) {
        if (step < TYPED.size())
            pressKey(filter, TYPED[step].unicode(), TYPED.mid(step, 1));
        else
            pressKey(filter, Qt::Key_Backspace, QString());
        fewest = std::min(fewest, dialog.MSHFlexGrid1()->model()->rowCount());
        step = (step + 1) % (2 * TYPED.size());
    }
    if (!dialogs.messages().empty() || fewest == all || fewest == 0)
        state.SkipWithError("the filter did not narrow the list to Lufthansa");
    state.counters["airlines"] = all;
}
// 18 keys make a full round: each repetition types and deletes "Lufthansa" ten times.
BENCHMARK(BM_FilterKeyByKey)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(180)
    ->Repetitions(7)
    ->ReportAggregatesOnly(true);

} // namespace
