// A lesson map editor without a window of a host's, what it shows, and what it has told.
#pragma once

#include "LessonMapHost.h"

namespace dax::test {

class LessonMapFixture : public OcxTest {
protected:
    void SetUp() override {
        OcxTest::SetUp();
        control = Create(L"DAXControls.LessonMapEditor");
        sink.Connect(control.Get());
    }
    void TearDown() override {
        sink.Disconnect();
        control.Reset();
        lesson.Reset();
        EXPECT_EQ(sink.references, 1u);
        EXPECT_EQ(FakeDispatch::living, 0);
        OcxTest::TearDown();
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

    Sink sink{[this](DISPID event, const std::vector<Text>& arguments) {
        constexpr const char* names[] = {"",           "BeforeSelectionChange", "AfterSelectionChange", "ItemChecked",
                                         "MapChanged", "DeleteRequest",         "ContextMenuRequest",   "Error"};
        heard += (heard.empty() ? "" : " ") + std::string(names[event]) + "(";
        for (const Text& argument : arguments) heard += ToUtf8(argument);
        heard += ')';
    }};
};

} // namespace dax::test
