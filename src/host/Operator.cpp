#include "host/Operator.h"

#include "host/MediaFormat.h"

#include <utility>

namespace {

bool HasDefault(const Input& input) {
    return input.Tags().FindQuery(InputTag_Default) || input.Tags().FindQuery(InputTag_DefaultEntry);
}

} // namespace

Operator::Operator(CorvexDoc* document, MediaFormat* format) : document_(document), format_(format) {}

Operator::~Operator() = default;

Input* Operator::AddInput(const char* label, const char* id, const TagList& tags) {
    const ControlNest* const nest = openNests_.empty() ? nullptr : openNests_.back();
    inputs_.push_back(std::make_unique<Input>(label, id, tags, nest));
    return inputs_.back().get();
}

void Operator::BeginControlNest(const char* label, const char* id, bool open) {
    nests_.push_back({label, CxID(id, true), open});
    openNests_.push_back(&nests_.back());
}

void Operator::EndControlNest() {
    if (!openNests_.empty()) openNests_.pop_back();
}

std::vector<Input*> Operator::Inputs() const {
    std::vector<Input*> inputs;
    for (const std::unique_ptr<Input>& input : inputs_)
        inputs.push_back(input.get());
    return inputs;
}

Input* Operator::FindInput(const char* id) const {
    for (const std::unique_ptr<Input>& input : inputs_) {
        if (input->Id() == id) return input.get();
    }
    return nullptr;
}

bool Operator::SetInput(const char* id, const Parameter& value, double time) {
    Input* const input = FindInput(id);
    return input != nullptr && Change(*input, value, time);
}

void Operator::SendDefaults() {
    for (Input* const input : Inputs()) { // a copy: the format may add controls while it is told
        const Parameter* const value = input->GetValue(CxTime_None);
        if (value != nullptr && HasDefault(*input)) Change(*input, *value, CxTime_None);
    }
}

bool Operator::Change(Input& input, const Parameter& value, double time) {
    // A value of its own is what the format sees: it may set the control, which ends what that held.
    const std::unique_ptr<Parameter> told = value.Clone();
    if (!input.SetSource(*told, time, 0, 0)) return false;
    if (format_ != nullptr) format_->NotifyChangedSave(this, &input, told.get(), time);
    return true;
}
