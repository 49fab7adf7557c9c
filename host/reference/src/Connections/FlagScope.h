#ifndef CONNECTIONS_FLAGSCOPE_H
#define CONNECTIONS_FLAGSCOPE_H

/// Raises a flag for one scope.
class FlagScope
{
public:
    explicit FlagScope(bool& flag) : m_flag(flag) { m_flag = true; }
    ~FlagScope() { m_flag = false; }
    FlagScope(const FlagScope&) = delete;
    FlagScope& operator=(const FlagScope&) = delete;

private:
    bool& m_flag;
};

#endif
