#include "data/Recordset.h"

#include "data/RecordsetState.h"

namespace dax {

Recordset::Recordset() : state(std::make_unique<RecordsetState>()) {}
Recordset::~Recordset() { state->Close(); }

void Recordset::SetCursorLocation(CursorLocations location) { state->location = location; }

void Recordset::Open(const Text& source, Connection& connection, CursorTypes cursor, LockTypes lock, int options) {
    if (IsOpen()) throw Error(u"The recordset is already open.");
    state->Open(source, connection, cursor, lock, options);
}

void Recordset::Open(const Text& source, const Text& connectionString, CursorTypes cursor, LockTypes lock,
                     int options) {
    if (IsOpen()) throw Error(u"The recordset is already open.");
    state->ownConnection = std::make_unique<Connection>();
    state->ownConnection->Open(connectionString);
    state->Open(source, *state->ownConnection, cursor, lock, options);
}

bool Recordset::IsOpen() const { return state->IsOpen(); }
void Recordset::Cancel() noexcept { state->Cancel(); }
void Recordset::Close() { state->Close(); }

bool Recordset::Eof() const { return state->Eof(); }
void Recordset::MoveNext() { state->MoveNext(); }
int64_t Recordset::RecordCount() const { return state->RecordCount(); }

size_t Recordset::FieldCount() const { return state->Columns().size(); }
Text Recordset::FieldName(size_t column) const { return state->Columns().at(column).name; }
size_t Recordset::FieldIndex(TextView name) const { return state->FieldIndex(name); }
Value Recordset::Field(size_t column) const { return state->Field(column); }
TextView Recordset::FieldText(size_t column) const { return state->FieldText(column); }

std::optional<TextView> Recordset::FieldTextOrNull(size_t column) const { return state->FieldTextOrNull(column); }

void Recordset::AddNew() { state->AddNew(); }
void Recordset::SetField(TextView name, Value value) { state->SetField(name, std::move(value)); }
void Recordset::Update() { state->Update(); }

} // namespace dax
