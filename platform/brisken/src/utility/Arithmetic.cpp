#include <brisken/utility/Arithmetic.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "utility/Arithmetic.cpp"
#include <hwy/foreach_target.h>

#include "utility/Rows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace brisken::utility::HWY_NAMESPACE {

struct Plus : ElementOp
{
    template <class V>
    HWY_INLINE V operator()(V inA, V inB) const
    {
        return hn::Add(inA, inB);
    }
};

struct SecondMinusFirst : ElementOp
{
    template <class V>
    HWY_INLINE V operator()(V inA, V inB) const
    {
        return hn::Sub(inB, inA);
    }
};

struct Times : ElementOp
{
    template <class V>
    HWY_INLINE V operator()(V inA, V inB) const
    {
        return hn::Mul(inA, inB);
    }
};

struct Over : ElementOp
{
    template <class V>
    HWY_INLINE V operator()(V inA, V inB) const
    {
        return hn::Div(inA, inB);
    }
};

struct SecondOverFirst : ElementOp
{
    template <class V>
    HWY_INLINE V operator()(V inA, V inB) const
    {
        return hn::Div(inB, inA);
    }
};

/// out += a * b
template <class T>
struct AddProductStep : BinaryStep<Times, T>
{
    template <class D>
    HWY_INLINE auto Compute(D d, std::size_t i) const
    {
        return hn::MulAdd(hn::LoadU(d, this->inA + i), hn::LoadU(d, this->inB + i),
                          hn::LoadU(d, this->out + i));
    }
};

/// out += a * constant
template <class T>
struct AddConstantProductStep : ConstantStep<Times, T>
{
    template <class D>
    HWY_INLINE auto Compute(D d, std::size_t i) const
    {
        return hn::MulAdd(hn::LoadU(d, this->inA + i), hn::Set(d, this->inConstant),
                          hn::LoadU(d, this->out + i));
    }
};

template <class T>
void AddProductRow(unsigned inCount, const T* inA, const T* inB, T* ioSum)
{
    RunRow(hn::ScalableTag<T>(), inCount, AddProductStep<T>{{inA, inB, ioSum}});
}

template <class T>
void AddConstantProductRow(unsigned inCount, const T* inA, T inConstant, T* ioSum)
{
    RunRow(hn::ScalableTag<T>(), inCount, AddConstantProductStep<T>{{inA, inConstant, ioSum}});
}

constexpr auto& AddF32 = BinaryRow<Plus, float>;
constexpr auto& AddF64 = BinaryRow<Plus, double>;
constexpr auto& SubF32 = BinaryRow<SecondMinusFirst, float>;
constexpr auto& SubF64 = BinaryRow<SecondMinusFirst, double>;
constexpr auto& MulF32 = BinaryRow<Times, float>;
constexpr auto& MulF64 = BinaryRow<Times, double>;
constexpr auto& DivF32 = BinaryRow<SecondOverFirst, float>;
constexpr auto& DivF64 = BinaryRow<SecondOverFirst, double>;
constexpr auto& AddConstantF32 = ConstantRow<Plus, float>;
constexpr auto& AddConstantF64 = ConstantRow<Plus, double>;
constexpr auto& MulConstantF32 = ConstantRow<Times, float>;
constexpr auto& MulConstantF64 = ConstantRow<Times, double>;
constexpr auto& DivConstantF32 = ConstantRow<Over, float>;
constexpr auto& DivConstantF64 = ConstantRow<Over, double>;
constexpr auto& AddProductF32 = AddProductRow<float>;
constexpr auto& AddProductF64 = AddProductRow<double>;
constexpr auto& AddConstantProductF32 = AddConstantProductRow<float>;
constexpr auto& AddConstantProductF64 = AddConstantProductRow<double>;

} // namespace brisken::utility::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

#include "utility/Exports.h"

namespace brisken::utility {

HWY_EXPORT(AddF32);
HWY_EXPORT(AddF64);
HWY_EXPORT(SubF32);
HWY_EXPORT(SubF64);
HWY_EXPORT(MulF32);
HWY_EXPORT(MulF64);
HWY_EXPORT(DivF32);
HWY_EXPORT(DivF64);
HWY_EXPORT(AddConstantF32);
HWY_EXPORT(AddConstantF64);
HWY_EXPORT(MulConstantF32);
HWY_EXPORT(MulConstantF64);
HWY_EXPORT(DivConstantF32);
HWY_EXPORT(DivConstantF64);
HWY_EXPORT(AddProductF32);
HWY_EXPORT(AddProductF64);
HWY_EXPORT(AddConstantProductF32);
HWY_EXPORT(AddConstantProductF64);

// Both forms of an operation and both ways of giving a constant run the same kernel.

BRISKEN_BINARY(Add, float, AddF32)
BRISKEN_BINARY(Add, double, AddF64)
BRISKEN_BINARY_IN_PLACE(Add_InPlace, float, AddF32)
BRISKEN_BINARY_IN_PLACE(Add_InPlace, double, AddF64)

BRISKEN_BINARY(Sub, float, SubF32)
BRISKEN_BINARY(Sub, double, SubF64)
BRISKEN_BINARY_IN_PLACE(Sub_InPlace, float, SubF32)
BRISKEN_BINARY_IN_PLACE(Sub_InPlace, double, SubF64)

BRISKEN_MIDDLE_CONSTANT(AddConstant, float, AddConstantF32)
BRISKEN_MIDDLE_CONSTANT(AddConstant, double, AddConstantF64)
BRISKEN_CONSTANT_IN_PLACE(AddConstant_InPlace, float, AddConstantF32)
BRISKEN_CONSTANT_IN_PLACE(AddConstant_InPlace, double, AddConstantF64)

void SubConstant(unsigned inCount, const float* inA, float inConstant, float* outDifference)
{
    AddConstant(inCount, inA, -inConstant, outDifference);
}

void SubConstant(unsigned inCount, const double* inA, double inConstant, double* outDifference)
{
    AddConstant(inCount, inA, -inConstant, outDifference);
}

BRISKEN_BINARY(Mul, float, MulF32)
BRISKEN_BINARY(Mul, double, MulF64)
BRISKEN_BINARY_IN_PLACE(Mul_InPlace, float, MulF32)
BRISKEN_BINARY_IN_PLACE(Mul_InPlace, double, MulF64)

BRISKEN_CONSTANT(MulConstant, float, MulConstantF32)
BRISKEN_CONSTANT(MulConstant, double, MulConstantF64)
BRISKEN_CONSTANT_IN_PLACE(MulConstant_InPlace, float, MulConstantF32)
BRISKEN_CONSTANT_IN_PLACE(MulConstant_InPlace, double, MulConstantF64)

BRISKEN_BINARY_IN_PLACE(Div_InPlace, float, DivF32)
BRISKEN_BINARY_IN_PLACE(Div_InPlace, double, DivF64)
BRISKEN_CONSTANT_IN_PLACE(DivConstant_InPlace, float, DivConstantF32)
BRISKEN_CONSTANT_IN_PLACE(DivConstant_InPlace, double, DivConstantF64)

BRISKEN_BINARY(AddProduct, float, AddProductF32)
BRISKEN_BINARY(AddProduct, double, AddProductF64)
BRISKEN_CONSTANT(AddConstantProduct, float, AddConstantProductF32)
BRISKEN_CONSTANT(AddConstantProduct, double, AddConstantProductF64)

} // namespace brisken::utility

#endif // HWY_ONCE
