#pragma once

#include <cfenv>

/** The default floating-point environment while it lives, whatever the host's rounds to or traps. */
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
