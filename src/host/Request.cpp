#include "host/Request.h"

#include "host/Input.h"

Parameter* Request::GetInputData(const Input* input, int32_t) const {
    return input != nullptr ? input->GetValue(time_) : nullptr;
}
