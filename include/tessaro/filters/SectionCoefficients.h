#pragma once

#include <array>

namespace tessaro {

/// Everything that a running section multiplies by: the direct form `b0 b1 b2 a1 a2` (a0 being 1) and the
/// coupled form on two states,
///
///     y  = C1 s1 + C2 s2 + D x
///     s1 = A11 s1 + A12 s2 + B1 x
///     s2 = A21 s1 + A22 s2 + B2 x      (both from the states of before)
///
/// A fresh block passes the signal on in either form. A plain value.
template <typename T>
struct SectionCoefficients
{
    T b0 = T(1);
    T b1 = T(0);
    T b2 = T(0);
    T a1 = T(0);
    T a2 = T(0);
    T A11 = T(0);
    T A12 = T(0);
    T A21 = T(0);
    T A22 = T(0);
    T B1 = T(0);
    T B2 = T(0);
    T C1 = T(0);
    T C2 = T(0);
    T D = T(1);

    using Field = T SectionCoefficients::*;

    static constexpr std::array<Field, 5> DirectFields()
    {
        using S = SectionCoefficients;
        return {&S::b0, &S::b1, &S::b2, &S::a1, &S::a2};
    }

    static constexpr std::array<Field, 9> CoupledFields()
    {
        using S = SectionCoefficients;
        return {&S::A11, &S::A12, &S::A21, &S::A22, &S::B1, &S::B2, &S::C1, &S::C2, &S::D};
    }

    /// The arithmetic goes over all 14 values.
    SectionCoefficients& operator+=(const SectionCoefficients& inOther)
    {
        return ForAll([&](Field inField) { this->*inField += inOther.*inField; });
    }

    SectionCoefficients& operator-=(const SectionCoefficients& inOther)
    {
        return ForAll([&](Field inField) { this->*inField -= inOther.*inField; });
    }

    SectionCoefficients& operator/=(T inDivisor)
    {
        return ForAll([&](Field inField) { this->*inField /= inDivisor; });
    }

    friend SectionCoefficients operator-(SectionCoefficients inLeft, const SectionCoefficients& inRight)
    {
        return inLeft -= inRight;
    }

    friend SectionCoefficients operator/(SectionCoefficients inLeft, T inDivisor)
    {
        return inLeft /= inDivisor;
    }

private:
    template <typename Function>
    SectionCoefficients& ForAll(Function inFunction)
    {
        for (const auto field : DirectFields()) {
            inFunction(field);
        }
        for (const auto field : CoupledFields()) {
            inFunction(field);
        }
        return *this;
    }
};

/// What a section remembers of its signal. The coupled form keeps its two states in the places of the input.
template <typename T>
class FilterState
{
public:
    FilterState() = default;
    FilterState(const FilterState&) = default;
    FilterState& operator=(const FilterState&) = default;
    virtual ~FilterState() = default;

    virtual void Clear() { mInput1 = mInput2 = mOutput1 = mOutput2 = T(0); }

    T mInput1 = T(0); ///< previous input
    T mInput2 = T(0); ///< the input before that
    T mOutput1 = T(0);
    T mOutput2 = T(0);
};

} // namespace tessaro
