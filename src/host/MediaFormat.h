#pragma once

#include "host/CxID.h"
#include "host/Object.h"

class CxFrame;
class IOClass;
class Input;
class List;
class Operator;
class Parameter;
class Request;

/// A file format of the host's loader and saver tools. One object serves one tool, one thread at a time.
/// Every operation here does nothing, and those that return bool refuse; format classes fill what they offer.
/// The order of the virtual operations is part of the interface.
class CORVEX_HOST_API MediaFormat : public Object {
public:
    using Object::Object;

    /// Whether the options set so far go together; true.
    virtual bool CheckOptions();

    /// Opens a file. What was open before is closed.
    virtual bool OpenFile(const char* path, const TagList& tags);
    /// Opens a file and reads what it holds of the data type (`CLSID_DataType_Image`).
    virtual bool LoadHeaderTagList(const CxID& dataType, const char* path, TagList& tags);
    /// Starts saving data of a type.
    virtual bool SaveHeaderTagList(CxID dataType, IOClass* io, Parameter* data, TagList& tags);
    /// Loads the data of a type from one time to another.
    virtual bool LoadDataTagList(CxID dataType, double start, double end, TagList& tags);
    /// Saves the data of a type at a time.
    virtual bool SaveDataTagList(CxID dataType, Parameter* data, double time, TagList& tags);
    /// Closes the file, finishing it if it was being saved. Closing a closed format is fine.
    virtual bool CloseFile();

    /// Adds small pictures of the file to `previews`.
    virtual bool GetPreviews(List* previews, uint32_t count, CxFrame* frame);
    /// Number of streams of a data type; 0.
    virtual int32_t GetNumStreams(CxID dataType);

    /// Adds the format's controls to a loader tool.
    virtual void AddLoadInputs(Operator* tool);
    /// A control of a loader tool has the new value `value` at `time`.
    virtual void NotifyChangedLoad(Operator* tool, Input* input, Parameter* value, double time);
    /// Reads the values of the loader's controls before a render.
    virtual void SetupLoad(Operator* tool, Request* request);
    /// Ends the render that `SetupLoad` began.
    virtual void CleanupLoad(Operator* tool);

    /// Adds the format's controls to a saver tool.
    virtual void AddSaveInputs(Operator* tool);
    /// A control of a saver tool has the new value `value` at `time`.
    virtual void NotifyChangedSave(Operator* tool, Input* input, Parameter* value, double time);
    /// Reads the values of the saver's controls before a render.
    virtual void SetupSave(Operator* tool, Request* request);
    /// Ends the render that `SetupSave` began.
    virtual void CleanupSave(Operator* tool);
};
