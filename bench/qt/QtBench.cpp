// What a desktop developer would take instead: Qt's SQL module with its item model, on the same files and statements.
#include "Courses.h"

#include <QCoreApplication>
#include <QHash>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStandardItemModel>
#include <QVariant>

namespace dax {

namespace {

using bench::Hierarchy, bench::Loaded, bench::UpdatesOf;

constexpr const char* name = "measured";

QString ToQt(TextView text) { return QString::fromUtf16(text.data(), static_cast<int>(text.size())); }

// Opens the file, does the work and closes it again.
template <typename Work>
void WithFile(const test::TestDatabase& database, benchmark::State& state, Work work) {
    {
        QSqlDatabase file = QSqlDatabase::addDatabase("QSQLITE", name);
        file.setDatabaseName(ToQt(database.Name()));
        if (!file.open() || !work(file)) state.SkipWithError("Qt could not do it");
    }
    QSqlDatabase::removeDatabase(name);
}

// A tree of items, with a hash on the key; every field is kept, as the editor keeps it.
void LoadWithQt(benchmark::State& state, int64_t size) {
    WithFile(Hierarchy(size), state, [size](const QSqlDatabase& file) {
        QStandardItemModel model;
        QHash<QString, QStandardItem*> items;
        QSqlQuery rows(file);
        rows.setForwardOnly(true);
        if (!rows.exec(bench::treeQuery)) return false;
        while (rows.next()) {
            auto* const item = new QStandardItem(rows.value(1).toString());
            const QString id = rows.value(0).toString();
            item->setData(id, Qt::UserRole);
            for (const int column : {2, 3, 6, 7}) item->setData(rows.value(column), Qt::UserRole + column);
            items.insert(id, item);
            QStandardItem* const parent = items.value(rows.value(4).toString());
            (parent ? parent : model.invisibleRootItem())->appendRow(item);
        }
        return items.size() == size;
    });
}

void Load(benchmark::State& state, int64_t size) {
    bench::InTurn(
        state, [&] { LoadWithQt(state, size); },
        [&] { benchmark::DoNotOptimize(Loaded(Hierarchy(size), size, state)); }, 0, &bench::Times::processor);
}

// Qt is handed the finished statements; the editor makes them out of its nodes.
void Save(benchmark::State& state, int64_t size) {
    const auto editor = Loaded(Hierarchy(size), size, state);
    std::vector<QString> statements;
    for (const Text& statement : UpdatesOf(*editor)) statements.push_back(ToQt(statement));
    const auto withQt = [&] {
        WithFile(Hierarchy(size), state, [&statements](QSqlDatabase& file) {
            if (!file.transaction()) return false;
            QSqlQuery query(file);
            for (const QString& statement : statements) {
                if (!query.exec(statement)) return false;
            }
            return file.commit();
        });
    };
    bench::InTurn(
        state, withQt, [&] { editor->SaveDatabase(); }, 0, &bench::Times::processor);
}

} // namespace

} // namespace dax

int main(int count, char** arguments) {
    const QCoreApplication application(count, arguments); // required by Qt's drivers
    for (const auto& [size, turns] : dax::bench::sizes) {
        const std::string what = std::to_string(size) + " lessons, beside Qt/Qt/GroupEditor";
        dax::bench::Register(
            "Load " + what, [size = size](benchmark::State& state) { dax::Load(state, size); }, turns);
        dax::bench::Register(
            "Save " + what, [size = size](benchmark::State& state) { dax::Save(state, size); }, turns);
    }
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    dax::bench::hierarchies.clear();
    return 0;
}
