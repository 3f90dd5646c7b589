// The controls of a saver tool, how the encoders follow the container, and what a render reads of them.

#include "ffmpeg/SaveTestSupport.h"
#include "host/CorvexDoc.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace {

using namespace CxFFMPEG;

constexpr char gif[] = "CompuServe Graphics Interchange Format (GIF)";
constexpr char matroska[] = "Matroska";

using Texts = std::vector<std::string>;

Texts TextsOf(const TagList& tags, Tag tag) {
    Texts texts;
    for (const TagItem* item = tags.Find(tag); item != nullptr; item = tags.FindNext(item))
        texts.emplace_back(item->Text());
    return texts;
}

Texts Sorted(const std::list<std::string>& names) {
    Texts sorted(names.begin(), names.end());
    std::sort(sorted.begin(), sorted.end());
    return sorted;
}

/// Tags of a control without its text, in order.
std::vector<Tag> TagsOf(const Input& control) {
    std::vector<Tag> tags;
    for (const TagItem& item : control.Tags().Items())
        tags.push_back(item.tag);
    return tags;
}

/// Notifications that the document gets during its life.
class Notifications {
public:
    using Notification = std::tuple<int32_t, int32_t, Operator*>;

    Notifications() {
        CorvexDoc::Get()->SetNotifyHook([this](int32_t code, int32_t argument, Operator* tool) {
            all.emplace_back(code, argument, tool);
        });
    }
    ~Notifications() { CorvexDoc::Get()->SetNotifyHook(nullptr); }
    Notifications(const Notifications&) = delete;
    Notifications& operator=(const Notifications&) = delete;

    std::vector<Notification> all;
};

/// Takes entries out of the table of containers until the end of its life.
class OtherContainers {
public:
    explicit OtherContainers(ContainerTable table)
        : iterate_(&FFmpegFunctions::av_muxer_iterate,
                   [](void**) -> const AVOutputFormat* { return nullptr; }),
          kept_(std::exchange(Table(), std::move(table))) {}
    ~OtherContainers() { Table() = std::move(kept_); }
    OtherContainers(const OtherContainers&) = delete;
    OtherContainers& operator=(const OtherContainers&) = delete;

private:
    // The object behind the reference is not constant: its first use has filled it.
    static ContainerTable& Table() { return const_cast<ContainerTable&>(GetContainerTable()); }

    ReplacedFunction<decltype(av_muxer_iterate)> iterate_; ///< nothing fills an empty table
    ContainerTable kept_;
};

/// The tool, before and after the host told the format of the defaults.
class SaveControls : public testing::Test {
protected:
    SaveControls() { format.AddSaveInputs(&tool); }

    Input& Control(const char* id) { return *tool.FindInput(id); }
    void Choose(const char* id, const char* entry, double time = CxTime_None) {
        EXPECT_TRUE(tool.SetInput(id, IDParameter(CxID(entry, true)), time));
    }
    /// The format is told of a value that the control need not hold.
    void Notify(const char* id, const char* entry) {
        IDParameter value(CxID(entry, true));
        format.NotifyChangedSave(&tool, &Control(id), &value, 5.0);
    }
    std::string Encoder() { return static_cast<const char*>(Control("EncoderProfile").GetID(0.0)); }
    Texts Encoders() { return TextsOf(Control("EncoderProfile").Tags(), 0x38040000); }
    int64_t NoChoice() { return Control("EncoderProfile").Tags().GetLong(0x1004000b, -1); }

    FFMPEGFileFormats format{nullptr, ScriptVal(), TagList()};
    Operator tool{CorvexDoc::Get(), &format};
};

struct ControlRow {
    const char* id;
    const char* label;
    const char* dataType;
    const char* look;
};

TEST_F(SaveControls, StandInTheirOrderWithIdsLabelsTypesAndLooks) {
    const ControlRow rows[] = {
        {"Container", "Container", CLSID_DataType_CxID, CLSID_InputControl_ComboID},
        {"EncoderProfile", "Encoder", CLSID_DataType_CxID, CLSID_InputControl_ComboID},
        {"FrameRateFps", "Frame Rate (fps)", CLSID_DataType_Number, CLSID_InputControl_Slider},
        {"DataRateK", "Data Rate (KB/s)", CLSID_DataType_Number, CLSID_InputControl_Slider},
        {"KeyFrames", "Key Frames", CLSID_DataType_Number, CLSID_InputControl_Slider},
        {"Options", "Encoder Options", CLSID_DataType_Text, CLSID_InputControl_TextEdit},
    };
    const std::vector<Input*> inputs = tool.Inputs();
    ASSERT_EQ(inputs.size(), std::size(rows));
    for (size_t i = 0; i < inputs.size(); ++i) {
        EXPECT_TRUE(inputs[i]->Id() == rows[i].id) << rows[i].id;
        EXPECT_STREQ(inputs[i]->Label(), rows[i].label);
        EXPECT_STREQ(inputs[i]->Tags().GetString(0x88020000, ""), rows[i].dataType) << rows[i].id;
        EXPECT_STREQ(inputs[i]->Tags().GetString(0x80030000, ""), rows[i].look) << rows[i].id;
        EXPECT_EQ(inputs[i]->Tags().GetLong(0x10030000, -1), 0) << rows[i].id;
    }
}

TEST_F(SaveControls, TheLastThreeAreInTheGroupAdvanced) {
    for (const char* const id : {"Container", "EncoderProfile", "FrameRateFps"})
        EXPECT_EQ(Control(id).Nest(), nullptr) << id;
    for (const char* const id : {"DataRateK", "KeyFrames", "Options"}) {
        ASSERT_NE(Control(id).Nest(), nullptr) << id;
        EXPECT_STREQ(Control(id).Nest()->label, "Advanced");
        EXPECT_TRUE(Control(id).Nest()->id == "Advanced");
    }
    tool.AddInput("After", "After", TagList());
    EXPECT_EQ(Control("After").Nest(), nullptr) << "the group is closed";
}

struct SliderRow {
    const char* id;
    double lowest;
    double highest;
    double start;
};

TEST_F(SaveControls, SlidersHaveTheirRangesAndDefaults) {
    for (const SliderRow& row :
         {SliderRow{"FrameRateFps", 0.01, 240.0, 24.0}, SliderRow{"DataRateK", 0.0, 1200.0, 512.0},
          SliderRow{"KeyFrames", 0.0, 64.0, 1.0}}) {
        const TagList& tags = Control(row.id).Tags();
        EXPECT_EQ(tags.GetDouble(0x20030000, -1.0), row.lowest) << row.id;
        EXPECT_EQ(tags.GetDouble(0x20030003, -1.0), row.highest) << row.id;
        EXPECT_EQ(tags.GetDouble(0x20030004, -1.0), row.start) << row.id;
        const auto* const value = dynamic_cast<NumberParameter*>(Control(row.id).GetValue(0.0));
        ASSERT_NE(value, nullptr) << row.id;
        EXPECT_EQ(value->Number(), row.start) << row.id;
    }
}

TEST_F(SaveControls, TheFrameRateShowsThreeDecimalsAndTheOthersWholeNumbers) {
    EXPECT_EQ(Control("FrameRateFps").Tags().GetLong(0x10040004, -1), 3);
    EXPECT_FALSE(Control("FrameRateFps").Tags().FindQuery(0x1003000c));
    for (const char* const id : {"DataRateK", "KeyFrames"}) {
        EXPECT_EQ(Control(id).Tags().GetLong(0x1003000c, -1), 1) << id;
        EXPECT_FALSE(Control(id).Tags().FindQuery(0x10040004)) << id;
    }
}

TEST_F(SaveControls, NoControlHasOtherTagsThanItsOwn) {
    const std::vector<Tag> combo = {0x88020000, 0x80030000, 0x10030000, 0x10030014,
                                    0x10020002, 0x1003000a, 0x10050001};
    const std::vector<Tag> slider = {0x88020000, 0x80030000, 0x10030000, 0x10030014,
                                     0x20030000, 0x20030003, 0x20030004};
    std::vector<Tag> rate = slider;
    rate.push_back(0x10040004);
    std::vector<Tag> whole = slider;
    whole.push_back(0x1003000c);
    EXPECT_EQ(TagsOf(Control("EncoderProfile")), combo);
    EXPECT_EQ(TagsOf(Control("FrameRateFps")), rate);
    EXPECT_EQ(TagsOf(Control("DataRateK")), whole);
    EXPECT_EQ(TagsOf(Control("KeyFrames")), whole);
    EXPECT_EQ(TagsOf(Control("Options")), (std::vector<Tag>{0x88020000, 0x80030000, 0x10030000, 0x10030002}));
    for (const char* const id : {"Container", "EncoderProfile"})
        for (const Tag tag : {0x10030014, 0x10020002, 0x1003000a, 0x10050001})
            EXPECT_EQ(Control(id).Tags().GetLong(tag, -1), 1) << id << std::hex << tag;
    EXPECT_EQ(Control("Options").Tags().GetLong(0x10030002, -1), 0);
}

TEST_F(SaveControls, ContainersAreListedInTheOrderOfTheirBytesEachTextWithItsId) {
    const Texts names = Sorted(GetContainerNames());
    ASSERT_GT(names.size(), 10U);
    EXPECT_EQ(TextsOf(Control("Container").Tags(), 0x38040000), names);
    EXPECT_EQ(TextsOf(Control("Container").Tags(), 0x88030000), names);
    const std::vector<Tag> tags = TagsOf(Control("Container"));
    for (size_t i = 0; i + 1 < tags.size(); ++i)
        if (tags[i] == 0x38040000) {
            EXPECT_EQ(tags[i + 1], 0x88030000U) << "an id right after its text";
        }
}

TEST_F(SaveControls, TheContainerStartsWithMatroska) {
    EXPECT_STREQ(Control("Container").Tags().GetString(0x80030003, ""), matroska);
    EXPECT_TRUE(Control("Container").GetID(0.0) == matroska);
}

TEST_F(SaveControls, AMissingMatroskaStaysTheDefaultThatIsNotInTheList) {
    ContainerTable others = GetContainerTable();
    others.erase(matroska);
    const OtherContainers without(std::move(others));
    FFMPEGFileFormats lacking(nullptr, ScriptVal(), TagList());
    Operator other(nullptr, &lacking);
    lacking.AddSaveInputs(&other);
    const Input& container = *other.FindInput("Container");
    EXPECT_TRUE(container.GetID(0.0) == matroska);
    const Texts names = TextsOf(container.Tags(), 0x38040000);
    EXPECT_GT(names.size(), 10U);
    EXPECT_EQ(std::count(names.begin(), names.end(), matroska), 0);
}

TEST_F(SaveControls, AnEmptyCatalogueLeavesBothCombosEmpty) {
    const OtherContainers none({});
    FFMPEGFileFormats lacking(nullptr, ScriptVal(), TagList());
    Operator other(nullptr, &lacking);
    lacking.AddSaveInputs(&other);
    other.SendDefaults();
    EXPECT_EQ(TextsOf(other.FindInput("Container")->Tags(), 0x38040000), Texts());
    EXPECT_EQ(TextsOf(other.FindInput("EncoderProfile")->Tags(), 0x38040000), Texts());
    EXPECT_TRUE(other.FindInput("EncoderProfile")->GetID(0.0).IsEmpty());
}

TEST_F(SaveControls, NoEncoderIsThereBeforeTheFirstChangeOfTheContainer) {
    EXPECT_EQ(Encoders(), Texts());
    EXPECT_EQ(Encoder(), "");
    EXPECT_EQ(NoChoice(), -1) << "the tag comes with the change";
    tool.SendDefaults();
    EXPECT_EQ(Encoders(), Sorted(GetEncoderLabels(matroska)));
}

TEST_F(SaveControls, ANewContainerListsItsEncodersInTheOrderOfTheirBytesAndChoosesTheFirst) {
    Choose("Container", "AVI (Audio Video Interleaved)");
    const Texts labels = Sorted(GetEncoderLabels("AVI (Audio Video Interleaved)"));
    ASSERT_GT(labels.size(), 3U);
    EXPECT_EQ(Encoders(), labels);
    EXPECT_EQ(Encoder(), labels.front());
    EXPECT_EQ(NoChoice(), 0);
}

TEST_F(SaveControls, TheEncodersOfTheContainerBeforeAreGone) {
    Choose("Container", matroska);
    Choose("EncoderProfile", "MPEG4");
    EXPECT_EQ(Encoder(), "MPEG4");
    Choose("Container", gif);
    EXPECT_EQ(Encoders(), Texts({"GIF"}));
    Choose("Container", matroska);
    EXPECT_EQ(Encoders(), Sorted(GetEncoderLabels(matroska)));
    EXPECT_EQ(Encoder(), Encoders().front()) << "the choice of before is forgotten";
}

TEST_F(SaveControls, AContainerWithASingleEncoderLeavesNoChoice) {
    Choose("Container", gif);
    EXPECT_EQ(Encoder(), "GIF");
    EXPECT_EQ(NoChoice(), 1);
    Choose("Container", matroska);
    EXPECT_EQ(NoChoice(), 0);
}

TEST_F(SaveControls, AnUnknownContainerHasNoEncoders) {
    for (const char* const name : {"no such container", ""}) {
        Choose("Container", matroska);
        Choose("Container", name);
        EXPECT_EQ(Encoders(), Texts()) << name;
        EXPECT_EQ(Encoder(), "") << name;
        EXPECT_EQ(NoChoice(), 1) << name;
    }
}

TEST_F(SaveControls, AChangeOfTheContainerIsToldToTheDocument) {
    const Notifications told;
    Choose("Container", gif);
    EXPECT_EQ(told.all, (std::vector<Notifications::Notification>{{5155, 1, &tool}}));
}

TEST_F(SaveControls, WithoutADocumentOrAToolNobodyIsTold) {
    const Notifications told;
    Operator alone(nullptr, &format);
    IDParameter value(CxID(gif, true));
    format.NotifyChangedSave(&alone, &Control("Container"), &value, 0.0);
    EXPECT_EQ(Encoder(), "GIF");
    IDParameter back(CxID(matroska, true));
    format.NotifyChangedSave(nullptr, &Control("Container"), &back, 0.0);
    EXPECT_EQ(Encoder(), Encoders().front());
    EXPECT_TRUE(told.all.empty());
}

TEST_F(SaveControls, AnEncoderThatTheContainerHasIsConfirmed) {
    Choose("Container", matroska);
    const Notifications told;
    Notify("EncoderProfile", "HEVC");
    EXPECT_EQ(Encoder(), "HEVC");
    EXPECT_EQ(told.all, (std::vector<Notifications::Notification>{{5155, 1, &tool}}));
}

TEST_F(SaveControls, AnEncoderThatTheContainerLacksIsNotConfirmedAndNobodyIsTold) {
    Choose("Container", gif);
    const Notifications told;
    for (const char* const name : {"HEVC", "gif", "GIF ", ""}) {
        Notify("EncoderProfile", name);
        EXPECT_EQ(Encoder(), "GIF") << name;
    }
    EXPECT_TRUE(told.all.empty());
}

TEST_F(SaveControls, AScriptsEncoderThatTheContainerLacksStaysUnconfirmedAndNobodyIsTold) {
    Choose("Container", gif);
    const Notifications told;
    Choose("EncoderProfile", "HEVC");
    EXPECT_EQ(Encoder(), "HEVC") << "what a script sets is the host's to keep";
    EXPECT_EQ(Encoders(), Texts({"GIF"}));
    EXPECT_EQ(NoChoice(), 1);
    EXPECT_TRUE(told.all.empty());
}

TEST_F(SaveControls, TheToolOfTheLastCallIsTheOneThatCounts) {
    Choose("Container", matroska);
    Operator second(CorvexDoc::Get(), &format);
    format.AddSaveInputs(&second);
    EXPECT_EQ(second.Inputs().size(), 6U);
    EXPECT_TRUE(second.SetInput("Container", IDParameter(CxID(gif, true)), CxTime_None));
    EXPECT_TRUE(second.FindInput("EncoderProfile")->GetID(0.0) == "GIF");
    Choose("Container", gif);
    EXPECT_EQ(Encoder(), Sorted(GetEncoderLabels(matroska)).front()) << "the first tool is forgotten";
}

TEST_F(SaveControls, AToolThatIsGivenTwiceHasTheControlsTwiceAndTheNewOnesCount) {
    format.AddSaveInputs(&tool);
    const std::vector<Input*> inputs = tool.Inputs();
    ASSERT_EQ(inputs.size(), 12U);
    IDParameter id(CxID(gif, true));
    format.NotifyChangedSave(&tool, inputs[6], &id, 0.0);
    EXPECT_TRUE(inputs[7]->GetID(0.0) == "GIF");
    EXPECT_TRUE(inputs[1]->GetID(0.0).IsEmpty());
    EXPECT_EQ(inputs[6]->Nest(), nullptr);
}

TEST_F(SaveControls, OtherControlsAndOtherValuesChangeNothing) {
    Choose("Container", matroska);
    const Texts before = Encoders();
    const Notifications told;
    IDParameter id(CxID(gif, true));
    NumberParameter number(1.0);
    Input foreign("Container", "Container", TagList());
    format.NotifyChangedSave(&tool, &Control("FrameRateFps"), &number, 0.0);
    format.NotifyChangedSave(&tool, &Control("Options"), &id, 0.0);
    format.NotifyChangedSave(&tool, &Control("Container"), &number, 0.0);
    format.NotifyChangedSave(&tool, &Control("Container"), nullptr, 0.0);
    format.NotifyChangedSave(&tool, &foreign, &id, 0.0);
    format.NotifyChangedSave(&tool, nullptr, &id, 0.0);
    EXPECT_EQ(Encoders(), before);
    EXPECT_TRUE(told.all.empty());
}

TEST(SaveControlsWithoutATool, NothingHappens) {
    FFMPEGFileFormats format(nullptr, ScriptVal(), TagList());
    const ImagePtr image = GreyImage(0);
    TagList tags;
    format.AddSaveInputs(nullptr);
    IDParameter id(CxID(gif, true));
    format.NotifyChangedSave(nullptr, nullptr, &id, 0.0);
    format.SetupSave(nullptr, nullptr);
    Request request(0.0);
    format.SetupSave(nullptr, &request);
    EXPECT_FALSE(format.SaveHeaderTagList("never.mkv", image.get(), tags));
    EXPECT_FALSE(format.SaveFrameTagList(0, image.get(), tags));
}

} // namespace
