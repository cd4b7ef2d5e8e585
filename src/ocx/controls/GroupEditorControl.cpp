#include "ocx/controls/GroupEditorControl.h"

#include "base/Error.h"
#include "hierarchy/win32/GroupEditorWindow.h"
#include "ocx/content/PropertyCollectionObject.h"
#include "ocx/controls/ControlClasses.h"
#include "ocx/controls/IDCollectionObject.h"
#include "ocx/hosting/Control.h"

namespace dax {

namespace {

// The private IID of a GroupEditorControl; it leads to its default interface.
constexpr IID PrivateEditorID{0xb1a7b9f4, 0x52fd, 0x4b0c, {0x9d, 0x25, 0x0e, 0x6e, 0x51, 0x8c, 0x0a, 0x43}};

class GroupEditorControl final : public ControlOf<_GroupEditor, GroupEditorWindow, GroupEditor> {
public:
    explicit GroupEditorControl(const ClassEntry& entry) : ControlOf(entry) {
        listeners = {
            editor->AfterSelectionChange.Add(
                [this](const Text& lessonID) { FireChange(AfterSelectionChangeEvent, {lessonID}); }),
            editor->DataChanged.Add([this] { FireChange(DataChangedEvent); }),
            editor->DeleteRequest.Add([this] { FireChange(DeleteRequestEvent); }),
            editor->Error.Add([this](int32_t number, const Text& description, const Text& module) {
                FireChange(ErrorEvent, {number, description, module});
            }),
            editor->DblClick.Add([this] { FireChange(DblClickEvent); }),
        };
    }

    const std::shared_ptr<GroupEditor>& Editor() const { return editor; }

    STDMETHODIMP get_AllowDragDrop(VARIANT_BOOL* value) override { return Get(value, &Core::AllowDragDrop); }
    STDMETHODIMP put_AllowDragDrop(VARIANT_BOOL value) override { return Put(&Core::SetAllowDragDrop, value); }
    STDMETHODIMP get_Locked(VARIANT_BOOL* value) override { return Get(value, &Core::Locked); }
    STDMETHODIMP put_Locked(VARIANT_BOOL value) override { return Put(&Core::SetLocked, value); }
    STDMETHODIMP get_SingleExpand(VARIANT_BOOL* value) override { return Get(value, &Core::SingleExpand); }
    STDMETHODIMP put_SingleExpand(VARIANT_BOOL value) override { return Put(&Core::SetSingleExpand, value); }
    STDMETHODIMP get_NodeCount(LONG* value) override { return Get(value, &Core::NodeCount); }
    STDMETHODIMP get_ConnectionString(BSTR* value) override { return Get(value, &Core::ConnectionString); }
    STDMETHODIMP put_ConnectionString(BSTR value) override { return Put(&Core::SetConnectionString, value); }
    STDMETHODIMP get_DatabaseTitle(BSTR* value) override { return Get(value, &Core::DatabaseTitle); }
    STDMETHODIMP put_DatabaseTitle(BSTR value) override { return Change(&Core::SetDatabaseTitle, value); }
    STDMETHODIMP get_CurrentLessonID(BSTR* value) override { return Get(value, &Core::CurrentLessonID); }
    STDMETHODIMP put_CurrentLessonID(BSTR value) override { return Change(&Core::SetCurrentLessonID, value); }

    STDMETHODIMP LockDisplay() override { return Call(&Core::LockDisplay); }
    STDMETHODIMP UnlockDisplay() override { return Change(&Core::UnlockDisplay); }
    STDMETHODIMP ExpandAll() override { return Change(&Core::ExpandAll); }
    STDMETHODIMP CollapseAll() override { return Change(&Core::CollapseAll); }
    STDMETHODIMP Clear(VARIANT_BOOL* result) override { return GetChange(result, &Core::Clear); }
    STDMETHODIMP LoadDatabase(VARIANT_BOOL* isLoaded) override { return GetChange(isLoaded, &Core::LoadDatabase); }
    STDMETHODIMP SaveDatabase(VARIANT_BOOL* isSaved) override { return Get(isSaved, &Core::SaveDatabase); }
    STDMETHODIMP AddLesson(BSTR lessonID, BSTR title, BSTR identifier, ::LessonTypes type) override {
        return Change(&Core::AddLesson, lessonID, title, identifier, type);
    }
    STDMETHODIMP UpdateLesson(BSTR lessonID, BSTR title, BSTR identifier, ::LessonTypes type) override {
        return Change(&Core::UpdateLesson, lessonID, title, identifier, type);
    }
    STDMETHODIMP RemoveLesson(BSTR lessonID, VARIANT_BOOL includeChildren) override {
        return Change(&Core::RemoveLesson, lessonID, includeChildren);
    }
    STDMETHODIMP CanMoveCurrent(::GroupMovementTypes gmt, VARIANT_BOOL* canMove) override {
        return Get(canMove, &Core::CanMoveCurrent, gmt);
    }
    STDMETHODIMP MoveCurrent(::GroupMovementTypes gmt) override { return Change(&Core::MoveCurrent, gmt); }

    STDMETHODIMP GetLessonTitle(BSTR lessonID, BSTR* title) override {
        return Get(title, &Core::GetLessonTitle, lessonID);
    }
    STDMETHODIMP GetLessonIdentifier(BSTR lessonID, BSTR* identifier) override {
        return Get(identifier, &Core::GetLessonIdentifier, lessonID);
    }
    STDMETHODIMP GetLessonType(BSTR lessonID, ::LessonTypes* type) override {
        return Get(type, &Core::GetLessonType, lessonID);
    }
    STDMETHODIMP GetChildLessonCount(BSTR lessonID, LONG* count) override {
        return Get(count, &Core::GetChildLessonCount, lessonID);
    }
    STDMETHODIMP GetChildLessonIDCollection(BSTR lessonID, _IDCollection** identifiers) override {
        return Get(identifiers, &Core::GetChildLessonIDCollection, lessonID);
    }
    STDMETHODIMP GetLessonProperties(BSTR lessonID, IDispatch** properties) override {
        return Get(properties, &Core::GetLessonProperties, lessonID);
    }
    STDMETHODIMP GetAggregateProperties(BSTR lessonID, IDispatch** properties) override {
        return Get(properties, &Core::GetAggregateProperties, lessonID);
    }
    STDMETHODIMP GetLessonTokens(BSTR lessonID, IDispatch** properties) override {
        return Get(properties, &Core::GetLessonTokens, lessonID);
    }
    STDMETHODIMP get_CanUndo(VARIANT_BOOL* value) override { return Get(value, &Core::CanUndo); }
    STDMETHODIMP Undo() override { return Change(&Core::Undo); }
    STDMETHODIMP get_CanRedo(VARIANT_BOOL* value) override { return Get(value, &Core::CanRedo); }
    STDMETHODIMP Redo() override { return Change(&Core::Redo); }
    STDMETHODIMP get_ConflictCheck(VARIANT_BOOL* value) override { return Get(value, &Core::ConflictCheck); }
    STDMETHODIMP put_ConflictCheck(VARIANT_BOOL value) override { return Put(&Core::SetConflictCheck, value); }
    STDMETHODIMP FindLesson(BSTR text, ::FindTypes findType, VARIANT_BOOL wrapAround, BSTR* lessonID) override {
        return GetChange(lessonID, &Core::FindLesson, text, findType, wrapAround);
    }

private:
    static constexpr DISPID AfterSelectionChangeEvent = 1, DataChangedEvent = 2, DeleteRequestEvent = 3, ErrorEvent = 4,
                            DblClickEvent = 5;

    Core& Target() const override { return *editor; }
    ~GroupEditorControl() override = default;

    void* Find(REFIID iid) override {
        return iid == PrivateEditorID ? static_cast<_GroupEditor*>(this) : ControlOf::Find(iid);
    }

    const std::shared_ptr<GroupEditor> editor = View().Editor();
    std::array<Subscription, 5> listeners;
};

} // namespace

std::shared_ptr<GroupEditor> EditorOf(_GroupEditor* editor) {
    if (!editor) return nullptr;
    const auto own = Query<_GroupEditor>(editor, PrivateEditorID);
    if (!own) {
        // Every proxy has that interface, and nothing else has: the editor itself is in another apartment.
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
