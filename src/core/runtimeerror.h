#pragma once

#include <stdexcept>
#include <string>

namespace fleetwright {

namespace platform {
enum class ReadFailure;
}

// A fault that stops the operation in which it happens.
// Only a boundary (a slot, a checker command) catches it and shows the critical box; the program lives on.
class RuntimeError : public std::runtime_error
{
public:
    RuntimeError(int number, std::u16string description, std::u16string procedure = {})
        : std::runtime_error("run-time error " + std::to_string(number))
        , m_number(number)
        , m_description(std::move(description))
        , m_procedure(std::move(procedure))
    {}

    // The errors that more than one place raises, each with the number and text the old run time gave it.
    static RuntimeError invalidProcedureCall(std::u16string procedure = {})
    {
        return {5, u"Invalid procedure call or argument", std::move(procedure)};
    }
    static RuntimeError overflow(std::u16string procedure = {}) { return {6, u"Overflow", std::move(procedure)}; }
    static RuntimeError subscriptOutOfRange(std::u16string procedure = {})
    {
        return {9, u"Subscript out of range", std::move(procedure)};
    }
    static RuntimeError typeMismatch(std::u16string procedure = {})
    {
        return {13, u"Type mismatch", std::move(procedure)};
    }
    static RuntimeError badFileNameOrNumber(std::u16string procedure = {})
    {
        return {52, u"Bad file name or number", std::move(procedure)};
    }
    static RuntimeError fileNotFound(std::u16string procedure = {})
    {
        return {53, u"File not found", std::move(procedure)};
    }
    static RuntimeError permissionDenied(std::u16string procedure = {})
    {
        return {70, u"Permission denied", std::move(procedure)};
    }
    static RuntimeError pathFileAccessError(std::u16string procedure = {})
    {
        return {75, u"Path/File access error", std::move(procedure)};
    }
    static RuntimeError pathNotFound(std::u16string procedure = {})
    {
        return {76, u"Path not found", std::move(procedure)};
    }
    static RuntimeError objectVariableNotSet(std::u16string procedure = {})
    {
        return {91, u"Object variable or With block variable not set", std::move(procedure)};
    }
    // The array helpers raise 9 and 13 themselves, capitalised as their texts have always read.
    static RuntimeError subscriptOutOfRangeAsRaised(std::u16string procedure = {})
    {
        return {9, u"Subscript out of Range", std::move(procedure)};
    }
    static RuntimeError typeMismatchAsRaised(std::u16string procedure = {})
    {
        return {13, u"Type Mismatch", std::move(procedure)};
    }

    // The error a failed whole-file read stands for: 53 "File not found", 76 "Path not found", 75
    // "Path/File access error" for a folder, 70 "Permission denied" for the rest.
    static RuntimeError readFailure(platform::ReadFailure reason, std::u16string procedure = {});

    int number() const { return m_number; }
    const std::u16string &description() const { return m_description; }
    const std::u16string &procedure() const { return m_procedure; }
    void setProcedure(std::u16string procedure) { m_procedure = std::move(procedure); }

private:
    int m_number;
    std::u16string m_description;
    std::u16string m_procedure;
};

} // namespace fleetwright
