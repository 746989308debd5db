#pragma once

/// @file
/// What stands in a register of a meter.

#include <cstdint>
#include <string>
#include <string_view>

/// How the words of a register are to be understood.
enum ERegisterType
{
    REGISTER_U16,
    REGISTER_I16,
    REGISTER_U32,
    REGISTER_I32,
    REGISTER_U64,
    REGISTER_I64,
    REGISTER_F32 ///< after IEEE 754
};

/// One value of a meter: where it stands and what it means.
struct Register
{
    std::string m_strName;
    std::uint16_t m_nAddress = 0; ///< of its first word, from 0
    ERegisterType m_eType = REGISTER_U16;
    bool m_bLowWordFirst = false; ///< else the word of highest value comes first
    bool m_bInput = false;        ///< an input register, else a holding one
    double m_dScale = 1;          ///< what 1 in the register stands for
    std::string m_strUnit;

    /// How many words it has.
    std::uint16_t Words() const;
    /// Digits behind the point that mean something: those of the scale, three for a float of scale 1.
    unsigned int Decimals() const;
    /// The scaled value. Whole numbers above 2^53 are rounded; a float may be no number.
    /// @param pWords  its words in the order of their addresses
    double Value(const std::uint16_t* pWords) const;
};

bool operator==(const Register& oLeft, const Register& oRight);

/// Reads what the settings say of a register, such as "0x0000 u32 lo-hi input 0.1 V": address and
/// type, then, in any order and each at most once, the order of the words, the kind of register,
/// the scale and the unit.
/// @param strText          the text
/// @param[out] roRegister  all of it but the name; partly set when the text is wrong
/// @return what is wrong, such as "has an unknown type 'u8'"; empty when nothing is
std::string ReadRegister(std::string_view strText, Register& roRegister);
