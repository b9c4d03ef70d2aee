#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace helper {

// A number modulo 2^255 - 19.
class CurveField {
public:
    using Bytes = std::array<std::uint8_t, 32>; // the lowest first

    CurveField() = default;
    explicit CurveField(std::uint64_t small) : _limbs{small, 0, 0, 0, 0} { }

    // Without the highest bit. nullopt for a number that is not below the modulus.
    static std::optional<CurveField> fromBytes(const Bytes& bytes);
    Bytes bytes() const;

    CurveField operator+(const CurveField& other) const;
    CurveField operator-(const CurveField& other) const;
    CurveField operator*(const CurveField& other) const;
    CurveField operator-() const { return CurveField() - *this; }
    bool operator==(const CurveField& other) const { return bytes() == other.bytes(); }

    bool isOdd() const { return (bytes()[0] & 1) != 0; }
    CurveField power(const Bytes& exponent) const;
    CurveField inverse() const; // of 0: 0
    // Of this by the divisor; nullopt when there is none.
    std::optional<CurveField> squareRootOfQuotient(const CurveField& divisor) const;

private:
    using Limbs = std::array<std::uint64_t, 5>; // of 51 bits and a little more

    explicit CurveField(const Limbs& limbs) : _limbs(limbs) { }
    static Limbs carried(Limbs limbs);

    Limbs _limbs{};
};

} // namespace helper
