#include "DAXControls.h"

#include "base/Error.h"
#include "lessonmap/win32/LessonMapEditorWindow.h"
#include "ocx/controls/ControlClasses.h"
#include "ocx/hosting/Control.h"
#include "ocx/lessonmap/LessonMapContent.h"
#include "ocx/lessonmap/LessonMapPictures.h"
#include "ocx/lessonmap/LessonMapStoryboards.h"
#include "ocx/lessonmap/LessonMapTree.h"

namespace dax {

namespace {

enum Events : DISPID { afterSelectionChange = 2, itemChecked, mapChanged, deleteRequest, contextMenuRequest, error };

using StoryboardRef = LessonMapEditor::StoryboardRef;

StoryboardRef StoryboardOf(IDispatch* object) { return object ? std::make_shared<HostStoryboard>(object) : nullptr; }

template <typename Face>
IDispatch* GivenObject(const std::shared_ptr<Face>& face) {
    IDispatch* const object = HostObjectOf(face);
    if (object) object->AddRef();
    return object;
}

class LessonMapEditorControl final : public ControlOf<_LessonMapEditor, LessonMapEditorWindow> {
public:
    explicit LessonMapEditorControl(const ClassEntry& entry) : ControlOf(entry) {
        selectionListener = editor->AfterSelectionChange.Add([this](const StoryboardRef& storyboard) {
            const SelfReference self(*this);
            ViewChanged();
            Fire(afterSelectionChange, {Variant(HostObjectOf(storyboard))});
        });
        checkListener = editor->ItemChecked.Add([this] { Tell(itemChecked); });
        mapListener = editor->MapChanged.Add([this](dax::MapChangeTypes change) {
            const SelfReference self(*this);
            ViewChanged();
            Fire(mapChanged, {Variant(int32_t{change})});
        });
        deleteListener = editor->DeleteRequest.Add([this] { Tell(deleteRequest); });
        menuListener = editor->ContextMenuRequest.Add([this] { Tell(contextMenuRequest); });
        errorListener = editor->Error.Add([this](int32_t number, const Text& description, const Text& module) {
            const SelfReference self(*this);
            ViewChanged();
            Fire(error, {Variant(number), Variant(TextView(description)), Variant(TextView(module))});
        });
    }

    STDMETHODIMP get_tvwObject(_TreeView** value) override {
        return Answer(value, [this] { return nodes->NewView(); });
    }
    STDMETHODIMP get_Lesson(IDispatch** value) override {
        return Answer(value, [this] { return GivenObject(editor->Lesson()); });
    }
    STDMETHODIMP put_Lesson(IDispatch* value) override { return putref_Lesson(value); }
    STDMETHODIMP putref_Lesson(IDispatch* value) override {
        return Run([&] { editor->SetLesson(LessonOf(value)); });
    }
    STDMETHODIMP get_CurrentStoryboard(IDispatch** value) override {
        return Answer(value, [this] { return GivenObject(editor->CurrentStoryboard()); });
    }
    STDMETHODIMP put_CurrentStoryboard(IDispatch* value) override { return putref_CurrentStoryboard(value); }
    STDMETHODIMP putref_CurrentStoryboard(IDispatch* value) override {
        return Run([&] { editor->SetCurrentStoryboard(StoryboardOf(value)); });
    }
    STDMETHODIMP get_CurrentSBID(BSTR* value) override {
        return Answer(value, [this] { return editor->CurrentSBID(); });
    }
    STDMETHODIMP put_CurrentSBID(BSTR value) override {
        return Run([&] { editor->SetCurrentSBID(FromBstr(value)); });
    }

    STDMETHODIMP CheckAllStoryboards() override {
        return Run([this] { editor->CheckAllStoryboards(); });
    }
    STDMETHODIMP UncheckAllStoryboards() override {
        return Run([this] { editor->UncheckAllStoryboards(); });
    }
    STDMETHODIMP get_CheckedStoryboards(_StoryboardCollection** value) override {
        return Answer(value, [this] { return NewStoryboardCollection(editor->CheckedStoryboards()); });
    }
    STDMETHODIMP get_CheckedStoryboardCount(LONG* value) override {
        return Answer(value, [this] { return editor->CheckedStoryboardCount(); });
    }
    STDMETHODIMP GetCheckedLesson(IDispatch** lesson) override {
        return Answer(lesson, [this]() -> IDispatch* {
            const auto checked = editor->GetCheckedLesson();
            if (!checked) return nullptr;
            const auto object = MakeLessonObject(*checked);
            object->AddRef();
            return object.Get();
        });
    }
    STDMETHODIMP GetChildStoryboardCount(BSTR sbid, LONG* count) override {
        return Answer(count, [&] { return editor->GetChildStoryboardCount(FromBstr(sbid)); });
    }
    STDMETHODIMP get_OrphanedStoryboards(_StoryboardCollection** value) override {
        return Answer(value, [this] { return NewStoryboardCollection(editor->OrphanedStoryboards()); });
    }

    STDMETHODIMP get_AllowDragDrop(VARIANT_BOOL* value) override {
        return Answer(value, [this] { return editor->AllowDragDrop(); });
    }
    STDMETHODIMP put_AllowDragDrop(VARIANT_BOOL value) override {
        return Run([&] { editor->SetAllowDragDrop(value != VARIANT_FALSE); });
    }
    STDMETHODIMP get_CaptionStyle(::LessonMapEditorCaptionStyles* value) override {
        return Answer(value, [this] { return editor->CaptionStyle(); });
    }
    STDMETHODIMP put_CaptionStyle(::LessonMapEditorCaptionStyles value) override {
        return Run([&] { editor->SetCaptionStyle(static_cast<dax::LessonMapEditorCaptionStyles>(value)); });
    }
    STDMETHODIMP get_Checkboxes(VARIANT_BOOL* value) override {
        return Answer(value, [this] { return editor->Checkboxes(); });
    }
    STDMETHODIMP put_Checkboxes(VARIANT_BOOL value) override {
        return Run([&] { editor->SetCheckboxes(value != VARIANT_FALSE); });
    }
    STDMETHODIMP get_Locked(VARIANT_BOOL* value) override {
        return Answer(value, [this] { return editor->Locked(); });
    }
    STDMETHODIMP put_Locked(VARIANT_BOOL value) override {
        return Run([&] { editor->SetLocked(value != VARIANT_FALSE); });
    }
    STDMETHODIMP get_ShowDefaultMapOnly(VARIANT_BOOL* value) override {
        return Answer(value, [this] { return editor->ShowDefaultMapOnly(); });
    }
    STDMETHODIMP put_ShowDefaultMapOnly(VARIANT_BOOL value) override {
        return Run([&] { editor->SetShowDefaultMapOnly(value != VARIANT_FALSE); });
    }

    STDMETHODIMP LockDisplay() override {
        return Run([this] { editor->LockDisplay(); });
    }
    STDMETHODIMP UnlockDisplay() override {
        return Run([this] { editor->UnlockDisplay(); });
    }
    STDMETHODIMP ExpandAll() override {
        return Run([this] { editor->ExpandAll(); });
    }
    STDMETHODIMP CollapseAll() override {
        return Run([this] { editor->CollapseAll(); });
    }
    STDMETHODIMP Refresh() override {
        return Run([this] { editor->Refresh(); });
    }
    STDMETHODIMP AddStoryboard(IDispatch* storyboard) override {
        return Run([&] { editor->AddStoryboard(StoryboardOf(storyboard)); });
    }
    STDMETHODIMP UpdateStoryboard(IDispatch* storyboard) override {
        return Run([&] { editor->UpdateStoryboard(StoryboardOf(storyboard)); });
    }
    STDMETHODIMP UpdateSBID(BSTR sbid) override {
        return Run([&] { editor->UpdateSBID(FromBstr(sbid)); });
    }
    STDMETHODIMP RemoveStoryboard(IDispatch* storyboard, VARIANT_BOOL includeChildren) override {
        return Run([&] { editor->RemoveStoryboard(StoryboardOf(storyboard), includeChildren != VARIANT_FALSE); });
    }
    STDMETHODIMP CanMoveCurrent(::StoryboardMovementTypes movement, VARIANT_BOOL* canMove) override {
        return Answer(canMove,
                      [&] { return editor->CanMoveCurrent(static_cast<dax::StoryboardMovementTypes>(movement)); });
    }
    STDMETHODIMP MoveCurrent(::StoryboardMovementTypes movement) override {
        return Run([&] { editor->MoveCurrent(static_cast<dax::StoryboardMovementTypes>(movement)); });
    }
    STDMETHODIMP FindNextSBID(BSTR criteria, ::FindTypes findType, VARIANT_BOOL exactMatch, VARIANT_BOOL wrapSearch,
                              BSTR* sbid) override {
        return Answer(sbid, [&] {
            return editor->FindNextSBID(FromBstr(criteria), static_cast<dax::FindTypes>(findType),
                                        exactMatch != VARIANT_FALSE, wrapSearch != VARIANT_FALSE);
        });
    }
    STDMETHODIMP SetImageList(VARIANT imageList, VARIANT keys) override {
        return Run([&] { UsePictures(imageList, keys); });
    }

private:
    ~LessonMapEditorControl() override { treeHost->control = nullptr; }

    // The tree as hosts hold it, who may hold it longer than the control.
    struct ControlTree final : TreeHost {
        explicit ControlTree(LessonMapEditorControl& owner) : control(&owner) {}
        int PictureOf(const Text& key) const override {
            return control ? control->editor->ImageList().IndexOfType(key) : 0;
        }
        TreeWindow* Window() const override { return control ? &control->View().Tree() : nullptr; }
        HWND Handle() const override { return control ? control->View().Tree().Handle() : nullptr; }
        ComPtr<IDispatch> ImageList() const override { return control ? control->imageList : ComPtr<IDispatch>(); }
        void SetImageList(IDispatch* list) override {
            if (!control) return;
            const SelfReference self(*control);
            control->UsePictures(Variant(list), Variant());
        }
        LessonMapEditorControl* control;
    };

    void UsePictures(const VARIANT& list, const VARIANT& keys) {
        const HostPictures pictures = ReadPictures(list, keys);
        const Variant plain = PlainOf(list);
        const auto object = pictures.images && plain.vt == VT_DISPATCH ? ObjectFrom(plain) : ComPtr<IDispatch>();
        if (!View().SetPictures(pictures.images, pictures.keys))
            throw Error(ErrorNumbers::TypeMismatch, u"There is no such image list.");
        imageList = object;
    }

    void Tell(DISPID event) {
        const SelfReference self(*this);
        Fire(event, {});
    }

    // The same face for the same object: setting a lesson once more is no other lesson.
    std::shared_ptr<Lesson> LessonOf(IDispatch* object) const {
        if (!object) return nullptr;
        auto former = editor->Lesson();
        const auto* const host = dynamic_cast<const HostObject*>(former.get());
        if (host && host->ObjectIdentity() == HostObject(object).ObjectIdentity()) return former;
        return std::make_shared<HostLesson>(object, LessonSupport{nodes, MakeMapObject});
    }

    const std::shared_ptr<dax::LessonMapEditor> editor = View().Editor();
    const std::shared_ptr<ControlTree> treeHost = std::make_shared<ControlTree>(*this);
    const std::shared_ptr<TreeObjects> nodes = std::make_shared<TreeObjects>(editor->tvwObject(), treeHost);
    ComPtr<IDispatch> imageList; // the object that the host has set
    Subscription selectionListener, checkListener, mapListener, deleteListener, menuListener, errorListener;
};

} // namespace

IUnknown* CreateLessonMapEditor(const ClassEntry& entry) {
    return static_cast<_LessonMapEditor*>(new LessonMapEditorControl(entry));
}

} // namespace dax
