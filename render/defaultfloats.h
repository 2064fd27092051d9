#pragma once

#include <cfenv>

/**
 * Sets the default floating-point environment while it lives: hosts may have set another rounding mode or enabled
 * traps.
 */
class DefaultFloats
{
public:
    DefaultFloats()
    {
        std::fegetenv(&m_environment);
        std::fesetenv(FE_DFL_ENV);
    }
    ~DefaultFloats() { std::fesetenv(&m_environment); }
    DefaultFloats(const DefaultFloats &) = delete;
    DefaultFloats &operator=(const DefaultFloats &) = delete;

private:
    std::fenv_t m_environment;
};
