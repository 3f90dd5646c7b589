#pragma once

#include "host/CxID.h"
#include "host/Export.h"

#include <memory>
#include <string>

/// A value of a control. What it holds is told by its class, which `dynamic_cast` finds out, also between
/// modules. A value never changes once it is made, so any thread may read it.
class CORVEX_HOST_API Parameter {
public:
    Parameter() = default;
    virtual ~Parameter();
    Parameter(const Parameter&) = delete;
    Parameter& operator=(const Parameter&) = delete;

    /// A value of the same class that holds the same; the caller owns it.
    virtual std::unique_ptr<Parameter> Clone() const = 0;
};

/// A number.
class CORVEX_HOST_API NumberParameter : public Parameter {
public:
    explicit NumberParameter(double number) : number_(number) {}

    double Number() const { return number_; }
    std::unique_ptr<Parameter> Clone() const override;

private:
    double number_;
};

/// Text in UTF-8.
class CORVEX_HOST_API TextParameter : public Parameter {
public:
    explicit TextParameter(std::string text);

    /// The text, valid as long as this value.
    const std::string& Text() const { return text_; }
    std::unique_ptr<Parameter> Clone() const override;

private:
    std::string text_;
};

/// An identifier, such as that of a combo's entry.
class CORVEX_HOST_API IDParameter : public Parameter {
public:
    explicit IDParameter(const CxID& id) : id_(id) {}

    const CxID& ID() const { return id_; }
    std::unique_ptr<Parameter> Clone() const override;

private:
    CxID id_;
};
