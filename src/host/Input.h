#pragma once

#include "host/CxID.h"
#include "host/CxString.h"
#include "host/InputTags.h"
#include "host/Object.h"
#include "host/Parameter.h"

#include <cstdint>
#include <memory>

/// The time that stands for no particular time, where a time in frames is asked for.
inline constexpr double CxTime_None = -2e9;

/// A group of controls that the user opens and closes as one.
struct ControlNest {
    CxString label; ///< as the user sees it
    CxID id;
    bool open; ///< whether the group is open at first
};

/// A control of a tool. It holds one value, of the type that its tags name: the one that was set last, which
/// counts at every time. One thread at a time.
class CORVEX_HOST_API Input : public RefObject {
public:
    /// A control without label, id, tags and value.
    Input() = default;
    /// Copies its arguments, but for `nest`, which outlives the control. The value is the default that the
    /// tags give: that of `InputTag_Default` for numbers, that of `InputTag_DefaultEntry` for ids, 0.0 or the
    /// empty id without such a tag, and the empty text for text. Without a type that the host knows there is
    /// no value, now or later.
    ///
    /// @param label  as the user sees it; null counts as empty
    /// @param id     names the control within its tool; null counts as empty
    /// @param nest   the innermost group that the control is in, or null
    Input(const char* label, const char* id, const TagList& tags, const ControlNest* nest = nullptr);
    ~Input() override;

    size_t ObjectSize() const override;

    const CxString& Label() const { return label_; }
    const CxID& Id() const { return id_; }
    /// The innermost group that the control is in, or null.
    const ControlNest* Nest() const { return nest_; }

    /// The control's tags, open to changes, such as those of a combo's entries. The value was made from them
    /// before, and stays as it is.
    TagList& Tags() { return tags_; }
    const TagList& Tags() const { return tags_; }
    /// Sets attributes, which are the control's tags, as `TagList::SetTags` does.
    /// @return false if `tags` is empty
    bool SetAttrsTagList(const TagList& tags) override;
    /// Knows every number among the control's tags.
    bool CopyAttr(Tag key, void* out) override;

    /// Makes a copy of `value` what the control holds from now on. A number may lie outside the slider's
    /// range, an id need not be one of the entries. Nobody is told, so that a format may call this while it
    /// is told of a change; `Operator::SetInput` is what the user does. The last two arguments are the host's
    /// and are always 0.
    ///
    /// @param time  in frames, or `CxTime_None`; the value counts at every time
    /// @return false, with the old value kept, if `value` is of another class than the control's
    bool SetSource(const Parameter& value, double time, int32_t, int32_t);
    /// The value at `time`, in frames, or null if the control holds none. Valid until a value is set.
    Parameter* GetValue(double time) const;
    /// Id that the control holds at `time`, in frames: of a combo control the chosen entry's. The empty id
    /// for a control that holds none.
    virtual CxID GetID(double time) const;

private:
    CxString label_;
    CxID id_;
    TagList tags_;
    const ControlNest* nest_ = nullptr;
    std::unique_ptr<Parameter> value_; ///< null: the control holds none
};
