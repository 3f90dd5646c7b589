#include "host/Operator.h"

#include "host/AutoCxIDParam.h"
#include "host/CorvexDoc.h"
#include "host/MediaFormat.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

TagList SliderTags(double number) {
    TagList tags;
    tags.Add(InputTag_DataType, CLSID_DataType_Number);
    tags.Set(InputTag_Default, number, false);
    return tags;
}

TagList ComboTags(const char* defaultEntry) {
    TagList tags;
    tags.Add(InputTag_DataType, CLSID_DataType_CxID);
    if (defaultEntry != nullptr) tags.Add(InputTag_DefaultEntry, defaultEntry);
    return tags;
}

IDParameter IdValue(const char* text) { return IDParameter(CxID(text, true)); }

/// A format with a choice of containers, whose encoder follows the container, as savers have it. It notes
/// what it is told.
class SaverFormat : public MediaFormat {
public:
    SaverFormat() : MediaFormat(nullptr, ScriptVal(), TagList()) {}

    void AddSaveInputs(Operator* tool) override {
        container = tool->AddInput(futr("Container"), "Container", ComboTags("Matroska"));
        encoder = tool->AddInput(futr("Encoder"), "EncoderProfile", ComboTags(nullptr));
        tool->AddInput(futr("Frame Rate (fps)"), "FrameRateFps", SliderTags(24.0));
    }

    void NotifyChangedSave(Operator* tool, Input* input, Parameter* value, double time) override {
        tools.push_back(tool);
        ids.emplace_back(input->Id());
        times.push_back(time);
        if (const auto* const id = dynamic_cast<IDParameter*>(value)) texts.emplace_back(id->ID());
        if (input == container) ChooseEncoder();
        if (addsControls) tool->AddInput("More", "More", SliderTags(1.0));
        // What the format was told stays, whatever it did to the control.
        if (dynamic_cast<IDParameter*>(value) != nullptr) input->SetSource(*value, time, 0, 0);
    }

    void ChooseEncoder() {
        const CxID chosen = AutoCxIDParam(container, CxTime_None);
        encoder->SetSource(IdValue(chosen == "Matroska" ? "FFV1" : "HEVC [Main]"), CxTime_None, 0, 0);
    }

    Input* container = nullptr;
    Input* encoder = nullptr;
    bool addsControls = false;
    std::vector<Operator*> tools;
    std::vector<std::string> ids;
    std::vector<double> times;
    std::vector<std::string> texts; ///< of the ids among the values
};

using Names = std::vector<std::string>;

class SaverTool : public testing::Test {
protected:
    SaverTool() { format.AddSaveInputs(&tool); }

    double FrameRate() const {
        const Parameter* const value = tool.FindInput("FrameRateFps")->GetValue(CxTime_None);
        return dynamic_cast<const NumberParameter&>(*value).Number();
    }

    SaverFormat format;
    Operator tool{CorvexDoc::Get(), &format};
};

TEST_F(SaverTool, KeepsItsControlsInTheOrderOfAdding) {
    Names ids;
    for (const Input* const input : tool.Inputs())
        ids.emplace_back(input->Id());
    EXPECT_EQ(ids, Names({"Container", "EncoderProfile", "FrameRateFps"}));
}

TEST_F(SaverTool, FindsAControlByItsId) {
    EXPECT_EQ(tool.FindInput("Container"), format.container);
    EXPECT_EQ(tool.FindInput("Format"), nullptr);
    EXPECT_EQ(tool.FindInput(nullptr), nullptr);
}

TEST_F(SaverTool, AddingControlsTellsNobody) {
    EXPECT_EQ(format.ids, Names());
    EXPECT_TRUE(format.encoder->GetID(0.0).IsEmpty());
}

TEST_F(SaverTool, SendDefaultsTellsOfEachControlWithADefaultInOrderAtNoParticularTime) {
    tool.SendDefaults();
    EXPECT_EQ(format.ids, Names({"Container", "FrameRateFps"}));
    EXPECT_EQ(format.times, std::vector<double>({-2e9, -2e9}));
    EXPECT_EQ(format.texts, Names({"Matroska"}));
    EXPECT_TRUE(format.encoder->GetID(0.0) == "FFV1");
}

TEST_F(SaverTool, SendDefaultsKeepsWhatWasSetBefore) {
    ASSERT_TRUE(tool.SetInput("FrameRateFps", NumberParameter(29.97), 0.0));
    tool.SendDefaults();
    EXPECT_EQ(FrameRate(), 29.97);
}

TEST_F(SaverTool, AFormatMayAddControlsWhileItIsToldOfDefaults) {
    format.addsControls = true;
    tool.SendDefaults();
    EXPECT_EQ(format.ids, Names({"Container", "FrameRateFps"}));
    EXPECT_EQ(tool.Inputs().size(), 5u);
}

TEST_F(SaverTool, AControlTakesTheValueAndThenTheFormatIsTold) {
    EXPECT_TRUE(tool.SetInput("Container", IdValue("QuickTime"), 7.0));
    EXPECT_EQ(format.tools, std::vector<Operator*>({&tool}));
    EXPECT_EQ(format.ids, Names({"Container"}));
    EXPECT_EQ(format.times, std::vector<double>({7.0}));
    EXPECT_EQ(format.texts, Names({"QuickTime"}));
    EXPECT_TRUE(format.container->GetID(7.0) == "QuickTime");
    EXPECT_TRUE(format.encoder->GetID(7.0) == "HEVC [Main]") << "the format read the new container";
}

TEST_F(SaverTool, AFormatThatSetsAControlIsNotToldOfItsOwnChange) {
    EXPECT_TRUE(tool.SetInput("Container", IdValue("QuickTime"), 0.0));
    EXPECT_EQ(format.ids, Names({"Container"}));
}

TEST_F(SaverTool, AValueThatTheFormatIgnoresStays) {
    EXPECT_TRUE(tool.SetInput("EncoderProfile", IdValue("Unheard Of"), 0.0));
    EXPECT_TRUE(format.encoder->GetID(0.0) == "Unheard Of");
}

TEST_F(SaverTool, ControlsAreSetInAnyOrder) {
    EXPECT_TRUE(tool.SetInput("FrameRateFps", NumberParameter(25.0), 0.0));
    EXPECT_TRUE(tool.SetInput("Container", IdValue("QuickTime"), 0.0));
    EXPECT_TRUE(tool.SetInput("FrameRateFps", NumberParameter(50.0), 0.0));
    EXPECT_EQ(format.ids, Names({"FrameRateFps", "Container", "FrameRateFps"}));
    EXPECT_EQ(FrameRate(), 50.0);
}

TEST_F(SaverTool, AnUnknownControlIsRefusedAndNobodyTold) {
    EXPECT_FALSE(tool.SetInput("Format", IdValue("QuickTime"), 0.0));
    EXPECT_FALSE(tool.SetInput(nullptr, IdValue("QuickTime"), 0.0));
    EXPECT_EQ(format.ids, Names());
}

TEST_F(SaverTool, AValueOfAnotherClassIsRefusedAndNobodyTold) {
    EXPECT_FALSE(tool.SetInput("Container", TextParameter("QuickTime"), 0.0));
    EXPECT_EQ(format.ids, Names());
    EXPECT_TRUE(format.container->GetID(0.0) == "Matroska");
}

TEST(Operator, TheDocumentIsTheOneGiven) {
    EXPECT_EQ(Operator(CorvexDoc::Get(), nullptr).GetDoc(), CorvexDoc::Get());
    EXPECT_EQ(Operator(nullptr, nullptr).GetDoc(), nullptr);
}

TEST(Operator, AToolWithoutAFormatTakesValues) {
    Operator tool(nullptr, nullptr);
    const Input* const container = tool.AddInput("Container", "Container", ComboTags("Matroska"));
    tool.SendDefaults();
    EXPECT_TRUE(tool.SetInput("Container", IdValue("QuickTime"), 0.0));
    EXPECT_TRUE(container->GetID(0.0) == "QuickTime");
}

TEST(Operator, AControlOfAnUnknownTypeHasNoDefaultToSend) {
    SaverFormat format;
    Operator tool(nullptr, &format);
    TagList tags;
    tags.Set(InputTag_Default, 1.0, false);
    tool.AddInput("Gradient", "Gradient", tags);
    tool.SendDefaults();
    EXPECT_EQ(format.ids, Names());
}

TEST(Operator, ControlsKnowTheInnermostGroupThatTheyAreIn) {
    Operator tool(nullptr, nullptr);
    const Input* const before = tool.AddInput("Before", "Before", SliderTags(0.0));
    tool.BeginControlNest("Advanced settings", "Advanced", false);
    const Input* const outer = tool.AddInput("Outer", "Outer", SliderTags(0.0));
    tool.BeginControlNest("Expert settings", "Expert", true);
    const Input* const inner = tool.AddInput("Inner", "Inner", SliderTags(0.0));
    tool.EndControlNest();
    const Input* const outerAgain = tool.AddInput("Again", "Again", SliderTags(0.0));
    tool.EndControlNest();
    const Input* const after = tool.AddInput("After", "After", SliderTags(0.0));

    EXPECT_EQ(before->Nest(), nullptr);
    ASSERT_NE(outer->Nest(), nullptr);
    EXPECT_STREQ(outer->Nest()->label, "Advanced settings");
    EXPECT_TRUE(outer->Nest()->id == "Advanced");
    EXPECT_FALSE(outer->Nest()->open);
    ASSERT_NE(inner->Nest(), nullptr);
    EXPECT_TRUE(inner->Nest()->id == "Expert");
    EXPECT_TRUE(inner->Nest()->open);
    EXPECT_EQ(outerAgain->Nest(), outer->Nest());
    EXPECT_EQ(after->Nest(), nullptr);
}

TEST(Operator, ClosingAGroupThatIsNotOpenDoesNothing) {
    Operator tool(nullptr, nullptr);
    tool.EndControlNest();
    EXPECT_EQ(tool.AddInput("After", "After", SliderTags(0.0))->Nest(), nullptr);
}

TEST(Operator, OfControlsWithTheSameIdTheFirstIsSet) {
    Operator tool(nullptr, nullptr);
    const Input* const first = tool.AddInput("First", "Container", ComboTags("Matroska"));
    const Input* const second = tool.AddInput("Second", "Container", ComboTags("Matroska"));
    EXPECT_TRUE(tool.SetInput("Container", IdValue("QuickTime"), 0.0));
    EXPECT_TRUE(first->GetID(0.0) == "QuickTime");
    EXPECT_TRUE(second->GetID(0.0) == "Matroska");
}

} // namespace
