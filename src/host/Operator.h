#pragma once

#include "host/Export.h"
#include "host/Input.h"

#include <deque>
#include <memory>
#include <vector>

class CorvexDoc;
class MediaFormat;

/// A saver tool of the host, with the controls that its format adds. A program uses one as the host does:
///
///     Operator tool(CorvexDoc::Get(), &format);
///     format.AddSaveInputs(&tool);
///     tool.SendDefaults();
///     tool.SetInput("FrameRateFps", NumberParameter(29.97), CxTime_None); // and so on, in any order
///     Request request(0.0);
///     format.SetupSave(&tool, &request);
///     ... // save
///     format.CleanupSave(&tool);
///
/// One thread at a time: the host's control thread, and the render's while it lasts.
class CORVEX_HOST_API Operator {
public:
    /// Neither argument is owned, and both outlive the tool.
    ///
    /// @param document  the document that the tool is in, or null
    /// @param format    told of every change to a control by `NotifyChangedSave`; null: nobody is told
    Operator(CorvexDoc* document, MediaFormat* format);
    ~Operator();
    Operator(const Operator&) = delete;
    Operator& operator=(const Operator&) = delete;

    /// The document that the tool is in, or null.
    CorvexDoc* GetDoc() const { return document_; }

    /// Adds a control behind those that are there, in the group that is open, and sets it to its default. The
    /// format is not told. The arguments are those of `Input` and are copied.
    /// @return the control, never null, which the tool owns and keeps for its life
    Input* AddInput(const char* label, const char* id, const TagList& tags);
    /// Opens a group for the controls that follow, within the one that is open if there is one. Null texts
    /// count as empty.
    void BeginControlNest(const char* label, const char* id, bool open);
    /// Closes the group opened last; does nothing if none is open.
    void EndControlNest();

    /// The controls in the order in which they were added.
    std::vector<Input*> Inputs() const;
    /// The first control with this id, or null. Null is the empty id.
    Input* FindInput(const char* id) const;

    /// Sets a control as the user or a script does: the control takes a copy of `value`, and then the format
    /// is told of it. The value stays also if the format doesn't confirm it.
    ///
    /// @param time  in frames, or `CxTime_None`
    /// @return false, with nothing changed and nobody told, if there is no such control or it holds values of
    ///         another class
    bool SetInput(const char* id, const Parameter& value, double time);
    /// Tells the format, in order and at `CxTime_None`, the value of each control whose tags give a default,
    /// as if the user had just set it. The host does so once the format has added its controls: those that
    /// follow another one are filled then.
    void SendDefaults();

private:
    bool Change(Input& input, const Parameter& value, double time);

    CorvexDoc* document_;
    MediaFormat* format_;
    std::deque<ControlNest> nests_;              ///< all groups so far; they stay where they are
    std::vector<const ControlNest*> openNests_;  ///< the innermost is the last
    std::vector<std::unique_ptr<Input>> inputs_; ///< refer to groups in `nests_`
};
