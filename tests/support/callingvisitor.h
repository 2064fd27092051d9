#pragma once

#include <functional>
#include <utility>

/** A visitor that calls a function. Receiver is the visitor's interface, Shown the type that it visits. */
template <class Receiver, class Shown>
class CallingVisitor final : public Receiver
{
public:
    explicit CallingVisitor(std::function<void(const Shown &)> visit) : m_visit(std::move(visit)) {}
    void Visit(const Shown &shown) override { m_visit(shown); }

private:
    std::function<void(const Shown &)> m_visit;
};
