#include "DAXControls.h"

#include "base/Error.h"
#include "lessonmap/win32/LessonMapEditorWindow.h"
#include "ocx/controls/ControlClasses.h"
#include "ocx/hosting/Control.h"
#include "ocx/lessonmap/ControlLink.h"
#include "ocx/lessonmap/LessonMapContent.h"
#include "ocx/lessonmap/StoryboardCollectionObject.h"
#include "ocx/lessonmap/TreeObjects.h"

namespace dax {

namespace {

enum Events : DISPID { afterSelectionChange = 2, itemChecked, mapChanged, deleteRequest, contextMenuRequest, error };

using StoryboardRef = LessonMapEditor::StoryboardRef;

class LessonMapEditorControl final : public ControlOf<_LessonMapEditor, LessonMapEditorWindow, dax::LessonMapEditor> {
public:
    explicit LessonMapEditorControl(const ClassEntry& entry) : ControlOf(entry) {
        selectionListener = editor->AfterSelectionChange.Add(
            [this](const StoryboardRef& storyboard) { FireChange(afterSelectionChange, {HostObjectOf(storyboard)}); });
        checkListener = editor->ItemChecked.Add([this] { Fire(itemChecked, {}); });
        mapListener = editor->MapChanged.Add([this](dax::MapChangeTypes change) { FireChange(mapChanged, {change}); });
        deleteListener = editor->DeleteRequest.Add([this] { Fire(deleteRequest, {}); });
        menuListener = editor->ContextMenuRequest.Add([this] { Fire(contextMenuRequest, {}); });
        errorListener = editor->Error.Add([this](int32_t number, const Text& description, const Text& module) {
            FireChange(error, {number, description, module});
        });
    }

    STDMETHODIMP get_tvwObject(_TreeView** value) override {
        return Get(value, [this] { return nodes->NewView(); });
    }
    STDMETHODIMP get_Lesson(IDispatch** value) override { return Get(value, &Core::Lesson); }
    STDMETHODIMP put_Lesson(IDispatch* value) override { return putref_Lesson(value); }
    STDMETHODIMP putref_Lesson(IDispatch* value) override {
        return Call([&] { editor->SetLesson(LessonOf(value)); });
    }
    STDMETHODIMP get_CurrentStoryboard(IDispatch** value) override { return Get(value, &Core::CurrentStoryboard); }
    STDMETHODIMP put_CurrentStoryboard(IDispatch* value) override { return putref_CurrentStoryboard(value); }
    STDMETHODIMP putref_CurrentStoryboard(IDispatch* value) override { return Put(&Core::SetCurrentStoryboard, value); }
    STDMETHODIMP get_CurrentSBID(BSTR* value) override { return Get(value, &Core::CurrentSBID); }
    STDMETHODIMP put_CurrentSBID(BSTR value) override { return Put(&Core::SetCurrentSBID, value); }

    STDMETHODIMP CheckAllStoryboards() override { return Call(&Core::CheckAllStoryboards); }
    STDMETHODIMP UncheckAllStoryboards() override { return Call(&Core::UncheckAllStoryboards); }
    STDMETHODIMP get_CheckedStoryboards(_StoryboardCollection** value) override {
        return Get(value, &Core::CheckedStoryboards);
    }
    STDMETHODIMP get_CheckedStoryboardCount(LONG* value) override { return Get(value, &Core::CheckedStoryboardCount); }
    STDMETHODIMP GetCheckedLesson(IDispatch** lesson) override {
        return Get(lesson, [this]() -> IDispatch* {
            const auto checked = editor->GetCheckedLesson();
            if (!checked) return nullptr;
            return MakeLessonObject(*checked).Detach();
        });
    }
    STDMETHODIMP GetChildStoryboardCount(BSTR sbid, LONG* count) override {
        return Get(count, &Core::GetChildStoryboardCount, sbid);
    }
    STDMETHODIMP get_OrphanedStoryboards(_StoryboardCollection** value) override {
        return Get(value, &Core::OrphanedStoryboards);
    }

    STDMETHODIMP get_AllowDragDrop(VARIANT_BOOL* value) override { return Get(value, &Core::AllowDragDrop); }
    STDMETHODIMP put_AllowDragDrop(VARIANT_BOOL value) override { return Put(&Core::SetAllowDragDrop, value); }
    STDMETHODIMP get_CaptionStyle(::LessonMapEditorCaptionStyles* value) override {
        return Get(value, &Core::CaptionStyle);
    }
    STDMETHODIMP put_CaptionStyle(::LessonMapEditorCaptionStyles value) override {
        return Put(&Core::SetCaptionStyle, value);
    }
    STDMETHODIMP get_Checkboxes(VARIANT_BOOL* value) override { return Get(value, &Core::Checkboxes); }
    STDMETHODIMP put_Checkboxes(VARIANT_BOOL value) override { return Put(&Core::SetCheckboxes, value); }
    STDMETHODIMP get_Locked(VARIANT_BOOL* value) override { return Get(value, &Core::Locked); }
    STDMETHODIMP put_Locked(VARIANT_BOOL value) override { return Put(&Core::SetLocked, value); }
    STDMETHODIMP get_ShowDefaultMapOnly(VARIANT_BOOL* value) override { return Get(value, &Core::ShowDefaultMapOnly); }
    STDMETHODIMP put_ShowDefaultMapOnly(VARIANT_BOOL value) override {
        return Put(&Core::SetShowDefaultMapOnly, value);
    }

    STDMETHODIMP LockDisplay() override { return Call(&Core::LockDisplay); }
    STDMETHODIMP UnlockDisplay() override { return Call(&Core::UnlockDisplay); }
    STDMETHODIMP ExpandAll() override { return Call(&Core::ExpandAll); }
    STDMETHODIMP CollapseAll() override { return Call(&Core::CollapseAll); }
    STDMETHODIMP Refresh() override { return Call(&Core::Refresh); }
    STDMETHODIMP AddStoryboard(IDispatch* storyboard) override { return Call(&Core::AddStoryboard, storyboard); }
    STDMETHODIMP UpdateStoryboard(IDispatch* storyboard) override { return Call(&Core::UpdateStoryboard, storyboard); }
    STDMETHODIMP UpdateSBID(BSTR sbid) override { return Call(&Core::UpdateSBID, sbid); }
    STDMETHODIMP RemoveStoryboard(IDispatch* storyboard, VARIANT_BOOL includeChildren) override {
        return Call(&Core::RemoveStoryboard, storyboard, includeChildren);
    }
    STDMETHODIMP CanMoveCurrent(::StoryboardMovementTypes movement, VARIANT_BOOL* canMove) override {
        return Get(canMove, &Core::CanMoveCurrent, movement);
    }
    STDMETHODIMP MoveCurrent(::StoryboardMovementTypes movement) override { return Call(&Core::MoveCurrent, movement); }
    STDMETHODIMP FindNextSBID(BSTR criteria, ::FindTypes findType, VARIANT_BOOL exactMatch, VARIANT_BOOL wrapSearch,
                              BSTR* sbid) override {
        return Get(sbid, &Core::FindNextSBID, criteria, findType, exactMatch, wrapSearch);
    }
    STDMETHODIMP SetImageList(VARIANT imageList, VARIANT keys) override {
        return Call([&] { link->SetImageList(imageList, keys); });
    }

private:
    Core& Target() const override { return *editor; }
    ~LessonMapEditorControl() override { link->OnControlDestroyed(); }

    // The same adapter for the same object: setting a lesson once more does not make it another one.
    std::shared_ptr<Lesson> LessonOf(IDispatch* object) const {
        if (!object) return nullptr;
        auto former = editor->Lesson();
        const auto* const host = dynamic_cast<const HostObject*>(former.get());
        if (host && host->ObjectIdentity() == HostObject(object).ObjectIdentity()) return former;
        ObjectMakers makers = nodes->Makers();
        makers.makeMap = MakeMapObject;
        return std::make_shared<HostLesson>(object, std::move(makers));
    }

    const std::shared_ptr<dax::LessonMapEditor> editor = View().Editor();
    const std::shared_ptr<ControlLink> link =
        std::make_shared<ControlLink>(static_cast<_LessonMapEditor&>(*this), View());
    const std::shared_ptr<TreeObjects> nodes = std::make_shared<TreeObjects>(editor->tvwObject(), link);
    Subscription selectionListener, checkListener, mapListener, deleteListener, menuListener, errorListener;
};

} // namespace

IUnknown* CreateLessonMapEditor(const ClassEntry& entry) {
    return static_cast<_LessonMapEditor*>(new LessonMapEditorControl(entry));
}

} // namespace dax
