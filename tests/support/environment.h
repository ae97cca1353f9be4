// Environment variables of this process, for code that reads them later in the same process or in a child.
// Call while no other thread reads the environment.
#pragma once

#include <optional>
#include <string>

namespace orvantis::test {

void setEnvironment(const std::string& name, const std::string& value);
void unsetEnvironment(const std::string& name);
std::optional<std::string> getEnvironment(const std::string& name);

/// Sets a variable and puts its former state back at the end.
class ScopedEnvironment {
 public:
    ScopedEnvironment(std::string name, const std::string& value)
        : m_name(std::move(name)), m_before(getEnvironment(m_name)) {
        setEnvironment(m_name, value);
    }
    ~ScopedEnvironment() {
        if (m_before) {
            setEnvironment(m_name, *m_before);
        } else {
            unsetEnvironment(m_name);
        }
    }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
    std::string m_name;
    std::optional<std::string> m_before;
};

}  // namespace orvantis::test
