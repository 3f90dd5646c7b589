#include "host/Parameter.h"

#include <utility>

Parameter::~Parameter() = default;

std::unique_ptr<Parameter> NumberParameter::Clone() const {
    return std::make_unique<NumberParameter>(number_);
}

TextParameter::TextParameter(std::string text) : text_(std::move(text)) {}

std::unique_ptr<Parameter> TextParameter::Clone() const { return std::make_unique<TextParameter>(text_); }

std::unique_ptr<Parameter> IDParameter::Clone() const { return std::make_unique<IDParameter>(id_); }
