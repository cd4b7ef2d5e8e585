// A lesson map editor without a window of a host's, what it shows, and what it has told.
#pragma once

#include "LessonMapHost.h"

namespace dax::test {

class LessonMapFixture : public OcxTest {
protected:
    void SetUp() override {
        OcxTest::SetUp();
        Begin();
    }
    void TearDown() override {
        End();
        EXPECT_EQ(HostThing::living, 0);
        OcxTest::TearDown();
    }

    void Begin() {
        control = Create(L"DAXControls.LessonMapEditor");
        ASSERT_TRUE(control);
        sink = HostThing::New();
        sink->onEvent = [this](DISPID event, const HostThing::Arguments& arguments) { Hear(event, arguments); };
        const auto info = Query<IProvideClassInfo2>(control.Get(), IID_IProvideClassInfo2);
        GUID events{};
        ASSERT_HRESULT_SUCCEEDED(info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &events));
        Query<IConnectionPointContainer>(control.Get(), IID_IConnectionPointContainer)
            ->FindConnectionPoint(events, point.Out());
        ASSERT_HRESULT_SUCCEEDED(point->Advise(sink.Get(), &cookie));
    }
    void End() {
        onEvent = nullptr;
        if (point) point->Unadvise(cookie);
        if (sink) sink->onEvent = nullptr;
        point.Reset();
        sink.Reset();
        control.Reset();
        lesson.Reset();
    }

    static Text PageLine(const Text& sbid) {
        return u"storyboard\t" + sbid + u"\ttext\tid " + sbid + u"\ttitle " + sbid + u"\n";
    }
    // The records of a lesson without its pages "a" to "d", which are added where the maps name them.
    void Show(const Text& records) {
        Text text = u"lesson\t1\n";
        for (const char16_t* sbid : {u"a", u"b", u"c", u"d"}) {
            if (records.find(u"\t" + Text(sbid) + u"\n") != Text::npos) text += PageLine(sbid);
        }
        lesson = Create(L"ContentObjects.Lesson");
        Call(lesson.Get(), L"Load", {Variant(TextView(text + records))});
        Put(control.Get(), L"Lesson", Variant(lesson.Get()), DISPATCH_PROPERTYPUTREF);
    }
    Text Saved() { return TextOf(Call(lesson.Get(), L"Save")); }
    ComPtr<IDispatch> Page(const char16_t* sbid) {
        return Get(Get(lesson.Get(), L"Storyboards").Get(), L"Item", {Variant(sbid)});
    }
    ComPtr<IDispatch> Nodes() { return Get(Get(control.Get(), L"tvwObject").Get(), L"Nodes"); }
    ComPtr<IDispatch> Node(const char16_t* key) { return Get(Nodes().Get(), L"Item", {Variant(key)}); }

    // The texts of all nodes: "above[below beside] top".
    std::string Shown() {
        const auto nodes = Nodes();
        if (NumberOf(Call(nodes.Get(), L"Count")) == 0) return {};
        const auto first = Get(nodes.Get(), L"Item", {Variant(1)});
        return Written(Get(first.Get(), L"FirstSibling"));
    }
    // The events since the last call.
    std::string Heard() { return std::exchange(heard, {}); }

    ComPtr<IDispatch> control, lesson;
    std::function<void(const std::string& event)> onEvent;
    std::string heard;

private:
    static std::string Written(ComPtr<IDispatch> node) {
        std::string text;
        for (; node; node = Get(node.Get(), L"Next")) {
            if (!text.empty()) text += ' ';
            text += ToUtf8(GetText(node.Get(), L"Text"));
            if (const auto child = Get(node.Get(), L"Child")) text += "[" + Written(child) + "]";
        }
        return text;
    }

    void Hear(DISPID event, const HostThing::Arguments& arguments) {
        constexpr const char* names[] = {"",           "BeforeSelectionChange", "AfterSelectionChange", "ItemChecked",
                                         "MapChanged", "DeleteRequest",         "ContextMenuRequest"};
        std::string text = names[event];
        text += '(';
        for (const Variant& each : arguments) {
            if (each.vt == VT_I4) text += std::to_string(each.lVal);
            if (each.vt == VT_DISPATCH && each.pdispVal) text += ToUtf8(GetText(each.pdispVal, L"SBID"));
        }
        text += ')';
        heard += (heard.empty() ? "" : " ") + text;
        const auto called = onEvent;
        if (called) called(names[event]);
    }

    ComPtr<HostThing> sink;
    ComPtr<IConnectionPoint> point;
    DWORD cookie = 0;
};

} // namespace dax::test
