#pragma once

#include <stdexcept>
#include <string>

namespace fleetwright {

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
