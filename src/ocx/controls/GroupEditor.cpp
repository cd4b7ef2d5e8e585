#include "ocx/controls/GroupEditor.h"

#include "base/Error.h"
#include "hierarchy/win32/GroupEditorWindow.h"
#include "ocx/content/PropertyCollection.h"
#include "ocx/controls/ControlClasses.h"
#include "ocx/controls/IDCollection.h"
#include "ocx/hosting/Control.h"

namespace dax {

namespace {

constexpr DISPID AfterSelectionChangeEvent = 1, DataChangedEvent = 2, DeleteRequestEvent = 3, ErrorEvent = 4,
                 DblClickEvent = 5;

// Only an editor of ours has this interface: it is then the default one of a GroupEditorControl.
constexpr IID OwnEditor{0xb1a7b9f4, 0x52fd, 0x4b0c, {0x9d, 0x25, 0x0e, 0x6e, 0x51, 0x8c, 0x0a, 0x43}};

class GroupEditorControl final : public ControlOf<_GroupEditor, GroupEditorWindow> {
public:
    explicit GroupEditorControl(const ClassEntry& entry) : ControlOf(entry) {
        listeners = {
            editor->AfterSelectionChange.Add(
                [this](const Text& lessonID) { Raise(AfterSelectionChangeEvent, {Variant(lessonID)}); }),
            editor->DataChanged.Add([this] { Raise(DataChangedEvent, {}); }),
            editor->DeleteRequest.Add([this] { Raise(DeleteRequestEvent, {}); }),
            editor->Error.Add([this](int32_t number, const Text& description, const Text& module) {
                Raise(ErrorEvent, {Variant(number), Variant(description), Variant(module)});
            }),
            editor->DblClick.Add([this] { Raise(DblClickEvent, {}); }),
        };
    }

    const std::shared_ptr<GroupEditor>& Editor() const { return editor; }

    STDMETHODIMP get_AllowDragDrop(VARIANT_BOOL* value) override {
        return Answer(value, [this] { return editor->AllowDragDrop(); });
    }
    STDMETHODIMP put_AllowDragDrop(VARIANT_BOOL value) override {
        return Run([&] { editor->SetAllowDragDrop(value != VARIANT_FALSE); });
    }
    STDMETHODIMP get_Locked(VARIANT_BOOL* value) override {
        return Answer(value, [this] { return editor->Locked(); });
    }
    STDMETHODIMP put_Locked(VARIANT_BOOL value) override {
        return Run([&] { editor->SetLocked(value != VARIANT_FALSE); });
    }
    STDMETHODIMP get_SingleExpand(VARIANT_BOOL* value) override {
        return Answer(value, [this] { return editor->SingleExpand(); });
    }
    STDMETHODIMP put_SingleExpand(VARIANT_BOOL value) override {
        return Run([&] { editor->SetSingleExpand(value != VARIANT_FALSE); });
    }
    STDMETHODIMP get_NodeCount(LONG* value) override {
        return Answer(value, [this] { return editor->NodeCount(); });
    }
    STDMETHODIMP get_ConnectionString(BSTR* value) override {
        return Answer(value, [this] { return editor->ConnectionString(); });
    }
    STDMETHODIMP put_ConnectionString(BSTR value) override {
        return Run([&] { editor->SetConnectionString(FromBstr(value)); });
    }
    STDMETHODIMP get_DatabaseTitle(BSTR* value) override {
        return Answer(value, [this] { return editor->DatabaseTitle(); });
    }
    STDMETHODIMP put_DatabaseTitle(BSTR value) override {
        return Change([&] { editor->SetDatabaseTitle(FromBstr(value)); });
    }
    STDMETHODIMP get_CurrentLessonID(BSTR* value) override {
        return Answer(value, [this] { return editor->CurrentLessonID(); });
    }
    STDMETHODIMP put_CurrentLessonID(BSTR value) override {
        return Change([&] { editor->SetCurrentLessonID(FromBstr(value)); });
    }

    STDMETHODIMP LockDisplay() override {
        return Run([this] { editor->LockDisplay(); });
    }
    STDMETHODIMP UnlockDisplay() override {
        return Change([this] { editor->UnlockDisplay(); });
    }
    STDMETHODIMP ExpandAll() override {
        return Change([this] { editor->ExpandAll(); });
    }
    STDMETHODIMP CollapseAll() override {
        return Change([this] { editor->CollapseAll(); });
    }
    STDMETHODIMP Clear(VARIANT_BOOL* result) override {
        return AnswerChange(result, [this] { return editor->Clear(); });
    }
    STDMETHODIMP LoadDatabase(VARIANT_BOOL* isLoaded) override {
        return AnswerChange(isLoaded, [this] { return editor->LoadDatabase(); });
    }
    STDMETHODIMP SaveDatabase(VARIANT_BOOL* isSaved) override {
        return Answer(isSaved, [this] { return editor->SaveDatabase(); });
    }
    STDMETHODIMP AddLesson(BSTR lessonID, BSTR title, BSTR identifier, ::LessonTypes type) override {
        return Change([&] {
            editor->AddLesson(FromBstr(lessonID), FromBstr(title), FromBstr(identifier),
                              static_cast<dax::LessonTypes>(type));
        });
    }
    STDMETHODIMP UpdateLesson(BSTR lessonID, BSTR title, BSTR identifier, ::LessonTypes type) override {
        return Change([&] {
            editor->UpdateLesson(FromBstr(lessonID), FromBstr(title), FromBstr(identifier),
                                 static_cast<dax::LessonTypes>(type));
        });
    }
    STDMETHODIMP RemoveLesson(BSTR lessonID, VARIANT_BOOL includeChildren) override {
        return Change([&] { editor->RemoveLesson(FromBstr(lessonID), includeChildren != VARIANT_FALSE); });
    }
    STDMETHODIMP CanMoveCurrent(::GroupMovementTypes gmt, VARIANT_BOOL* canMove) override {
        return Answer(canMove, [&] { return editor->CanMoveCurrent(static_cast<dax::GroupMovementTypes>(gmt)); });
    }
    STDMETHODIMP MoveCurrent(::GroupMovementTypes gmt) override {
        return Change([&] { editor->MoveCurrent(static_cast<dax::GroupMovementTypes>(gmt)); });
    }

    STDMETHODIMP GetLessonTitle(BSTR lessonID, BSTR* title) override {
        return Answer(title, [&] { return editor->GetLessonTitle(FromBstr(lessonID)); });
    }
    STDMETHODIMP GetLessonIdentifier(BSTR lessonID, BSTR* identifier) override {
        return Answer(identifier, [&] { return editor->GetLessonIdentifier(FromBstr(lessonID)); });
    }
    STDMETHODIMP GetLessonType(BSTR lessonID, ::LessonTypes* type) override {
        return Answer(type, [&] { return editor->GetLessonType(FromBstr(lessonID)); });
    }
    STDMETHODIMP GetChildLessonCount(BSTR lessonID, LONG* count) override {
        return Answer(count, [&] { return editor->GetChildLessonCount(FromBstr(lessonID)); });
    }
    STDMETHODIMP GetChildLessonIDCollection(BSTR lessonID, _IDCollection** identifiers) override {
        return Answer(identifiers,
                      [&] { return NewIDCollectionObject(editor->GetChildLessonIDCollection(FromBstr(lessonID))); });
    }
    STDMETHODIMP GetLessonProperties(BSTR lessonID, IDispatch** properties) override {
        return Answer(properties,
                      [&] { return NewPropertyCollectionObject(editor->GetLessonProperties(FromBstr(lessonID))); });
    }
    STDMETHODIMP GetAggregateProperties(BSTR lessonID, IDispatch** properties) override {
        return Answer(properties,
                      [&] { return NewPropertyCollectionObject(editor->GetAggregateProperties(FromBstr(lessonID))); });
    }
    STDMETHODIMP GetLessonTokens(BSTR lessonID, IDispatch** properties) override {
        return Answer(properties,
                      [&] { return NewPropertyCollectionObject(editor->GetLessonTokens(FromBstr(lessonID))); });
    }
    STDMETHODIMP get_CanUndo(VARIANT_BOOL* value) override {
        return Answer(value, [this] { return editor->CanUndo(); });
    }
    STDMETHODIMP Undo() override {
        return Change([this] { editor->Undo(); });
    }
    STDMETHODIMP get_CanRedo(VARIANT_BOOL* value) override {
        return Answer(value, [this] { return editor->CanRedo(); });
    }
    STDMETHODIMP Redo() override {
        return Change([this] { editor->Redo(); });
    }
    STDMETHODIMP get_ConflictCheck(VARIANT_BOOL* value) override {
        return Answer(value, [this] { return editor->ConflictCheck(); });
    }
    STDMETHODIMP put_ConflictCheck(VARIANT_BOOL value) override {
        return Run([&] { editor->SetConflictCheck(value != VARIANT_FALSE); });
    }
    STDMETHODIMP FindLesson(BSTR text, ::FindTypes findType, VARIANT_BOOL wrapAround, BSTR* lessonID) override {
        return Answer(lessonID, [&] {
            Text found =
                editor->FindLesson(FromBstr(text), static_cast<dax::FindTypes>(findType), wrapAround != VARIANT_FALSE);
            ViewChanged();
            return found;
        });
    }

private:
    ~GroupEditorControl() override = default;

    void* Find(REFIID iid) override {
        return iid == OwnEditor ? static_cast<_GroupEditor*>(this) : ControlOf::Find(iid);
    }

    void Raise(DISPID event, std::initializer_list<Variant> arguments) {
        const SelfReference self(*this);
        ViewChanged();
        Fire(event, arguments);
    }

    // Members that change what the control shows.
    template <typename Action>
    HRESULT Change(Action&& action) noexcept {
        return Run([&] {
            action();
            ViewChanged();
        });
    }
    template <typename Action>
    HRESULT AnswerChange(VARIANT_BOOL* result, Action&& action) noexcept {
        return Answer(result, [&] {
            const bool answer = action();
            ViewChanged();
            return answer;
        });
    }

    const std::shared_ptr<GroupEditor> editor = View().Editor();
    std::array<Subscription, 5> listeners;
};

} // namespace

std::shared_ptr<GroupEditor> HierarchyOf(_GroupEditor* editor) {
    if (!editor) return nullptr;
    const auto own = Query<_GroupEditor>(editor, OwnEditor);
    if (!own) {
        // Every proxy has that interface, and nothing else has: the editor itself is elsewhere.
        const bool isElsewhere = static_cast<bool>(Query<IUnknown>(editor, IID_IClientSecurity));
        throw Error(ErrorNumbers::TypeMismatch,
                    isElsewhere ? u"The GroupEditor belongs to another thread or process. A panel can be updated only "
                                  u"from an editor that was created in its own thread."
                                : u"Type mismatch");
    }
    return static_cast<GroupEditorControl*>(own.Get())->Editor();
}

IUnknown* CreateGroupEditor(const ClassEntry& entry) {
    return static_cast<_GroupEditor*>(new GroupEditorControl(entry));
}

} // namespace dax
