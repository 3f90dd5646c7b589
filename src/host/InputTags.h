#pragma once

#include "host/TagList.h"

/// Ids of the types of value that a control holds, under `InputTag_DataType`.
inline constexpr char CLSID_DataType_CxID[] = "DataType_CxID";     ///< an `IDParameter`
inline constexpr char CLSID_DataType_Number[] = "DataType_Number"; ///< a `NumberParameter`
inline constexpr char CLSID_DataType_Text[] = "DataType_Text";     ///< a `TextParameter`

/// Ids of the ways that a control looks, under `InputTag_Control`.
inline constexpr char CLSID_InputControl_ComboID[] = "InputControl_ComboID";   ///< one entry of a list
inline constexpr char CLSID_InputControl_Slider[] = "InputControl_Slider";     ///< a number within a range
inline constexpr char CLSID_InputControl_TextEdit[] = "InputControl_TextEdit"; ///< free text

/// Tags of controls. The stand-alone host reads the data type and the defaults; it keeps the rest for whoever
/// shows the controls. Those named after their number are known to the host alone.
enum InputTag : Tag {
    InputTag_DataType = 0x88020000, ///< id of the value's type, one of `CLSID_DataType_...`
    InputTag_Control = 0x80030000,  ///< id of the control's look, one of `CLSID_InputControl_...`
    InputTag_Host30000 = 0x10030000,
    InputTag_Host30014 = 0x10030014,

    InputTag_Host20002 = 0x10020002,
    InputTag_Host3000a = 0x1003000a,
    InputTag_Host50001 = 0x10050001,
    InputTag_EntryText = 0x38040000,    ///< an entry of a combo as the user sees it; repeated
    InputTag_EntryId = 0x88030000,      ///< id of the entry whose text stands before it; repeated
    InputTag_DefaultEntry = 0x80030003, ///< id that the control holds at first; empty if not given
    InputTag_NoChoice = 0x1004000b,     ///< 1: there is nothing to choose, so the user can't; default 0

    InputTag_Lowest = 0x20030000,       ///< left end of a slider; values beyond may be set all the same
    InputTag_Highest = 0x20030003,      ///< right end of a slider
    InputTag_Default = 0x20030004,      ///< number that the control holds at first; default 0.0
    InputTag_Decimals = 0x10040004,     ///< decimals that the user sees
    InputTag_WholeNumbers = 0x1003000c, ///< 1: the user sets whole numbers only; default 0

    InputTag_Host30002 = 0x10030002,
};
