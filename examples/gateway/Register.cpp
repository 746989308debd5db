#include "examples/gateway/Register.h"

#include "config/KorTextValue.h"

#include <cmath>
#include <cstring>
#include <vector>

namespace
{

constexpr unsigned int MAX_DECIMALS = 9;
constexpr unsigned int DECIMALS_OF_A_FLOAT = 3;
constexpr double LEAST_SCALE = 1e-9;
constexpr double GREATEST_SCALE = 1e9;
constexpr std::size_t LONGEST_UNIT = 16;
constexpr unsigned int ADDRESSES = 65536;

constexpr struct
{
    std::string_view m_strName;
    std::uint16_t m_nWords;
} TYPES[] = {{"u16", 1}, {"i16", 1}, {"u32", 2}, {"i32", 2}, {"u64", 4}, {"i64", 4}, {"f32", 2}};

std::string Quoted(std::string_view strText)
{
    return "'" + std::string(strText) + "'";
}

std::vector<std::string_view> Words(std::string_view strText)
{
    std::vector<std::string_view> vecWords;
    while (true) {
        const std::size_t nBegin = strText.find_first_not_of(" \t");
        if (nBegin == std::string_view::npos)
            return vecWords;
        strText.remove_prefix(nBegin);
        vecWords.push_back(strText.substr(0, strText.find_first_of(" \t")));
        strText.remove_prefix(vecWords.back().size());
    }
}

bool ReadType(std::string_view strText, ERegisterType& reType)
{
    int nType = 0;
    for (const auto& oType : TYPES) {
        if (oType.m_strName == strText) {
            reType = static_cast<ERegisterType>(nType);
            return true;
        }
        ++nType;
    }
    return false;
}

/// What a register line may hold behind address and type.
class Extras
{
public:
    explicit Extras(Register& roRegister) : m_oRegister(roRegister) {}

    /// Takes one word. @return what is wrong with it, or nothing
    std::string Take(std::string_view strWord)
    {
        double dScale = 0;
        if (strWord == "hi-lo" || strWord == "lo-hi")
            return TakeOrder(strWord);
        if (strWord == "holding" || strWord == "input") {
            m_oRegister.m_bInput = strWord == "input";
            return Once(m_bKind, "kind", strWord);
        }
        if (KorReadText(strWord, dScale))
            return TakeScale(strWord, dScale);
        return TakeUnit(strWord);
    }

private:
    static std::string Once(bool& rbGiven, const char* pszWhat, std::string_view strWord)
    {
        if (rbGiven)
            return std::string("has a second ") + pszWhat + " " + Quoted(strWord);
        rbGiven = true;
        return {};
    }

    std::string TakeOrder(std::string_view strWord)
    {
        if (m_oRegister.Words() == 1)
            return "has one word and needs no order " + Quoted(strWord);
        m_oRegister.m_bLowWordFirst = strWord == "lo-hi";
        return Once(m_bOrder, "order", strWord);
    }

    std::string TakeScale(std::string_view strWord, double dScale)
    {
        if (!(std::fabs(dScale) >= LEAST_SCALE && std::fabs(dScale) <= GREATEST_SCALE))
            return "has a scale " + Quoted(strWord) + " that is not in 1e-9 to 1e9";
        m_oRegister.m_dScale = dScale;
        return Once(m_bScale, "scale", strWord);
    }

    std::string TakeUnit(std::string_view strWord)
    {
        if (strWord.size() > LONGEST_UNIT)
            return "has a unit " + Quoted(strWord) + " of more than 16 bytes";
        m_oRegister.m_strUnit = strWord;
        return Once(m_bUnit, "unit", strWord);
    }

    Register& m_oRegister;
    bool m_bOrder = false;
    bool m_bKind = false;
    bool m_bScale = false;
    bool m_bUnit = false;
};

std::uint64_t Raw(const Register& oRegister, const std::uint16_t* pWords)
{
    std::uint64_t nRaw = 0;
    const unsigned int nWords = oRegister.Words();
    for (unsigned int i = 0; i < nWords; ++i)
        nRaw = nRaw << 16 | pWords[oRegister.m_bLowWordFirst ? nWords - 1 - i : i];
    return nRaw;
}

double FromFloat(std::uint64_t nRaw)
{
    const auto nBits = static_cast<std::uint32_t>(nRaw);
    float fValue = 0;
    static_assert(sizeof fValue == sizeof nBits);
    std::memcpy(&fValue, &nBits, sizeof fValue);
    return static_cast<double>(fValue);
}

} // namespace

std::uint16_t Register::Words() const
{
    return TYPES[m_eType].m_nWords;
}

unsigned int Register::Decimals() const
{
    if (m_eType == REGISTER_F32 && m_dScale == 1.0)
        return DECIMALS_OF_A_FLOAT;
    double dScale = std::fabs(m_dScale);
    unsigned int nDecimals = 0;
    while (nDecimals < MAX_DECIMALS && std::fabs(dScale - std::round(dScale)) > 1e-9 * dScale) {
        dScale *= 10;
        ++nDecimals;
    }
    return nDecimals;
}

double Register::Value(const std::uint16_t* pWords) const
{
    const std::uint64_t nRaw = Raw(*this, pWords);
    switch (m_eType) {
    case REGISTER_I16:
        return static_cast<std::int16_t>(nRaw) * m_dScale;
    case REGISTER_I32:
        return static_cast<std::int32_t>(nRaw) * m_dScale;
    case REGISTER_I64:
        return static_cast<double>(static_cast<std::int64_t>(nRaw)) * m_dScale;
    case REGISTER_F32:
        return FromFloat(nRaw) * m_dScale;
    default:
        return static_cast<double>(nRaw) * m_dScale;
    }
}

bool operator==(const Register& oLeft, const Register& oRight)
{
    return oLeft.m_strName == oRight.m_strName && oLeft.m_nAddress == oRight.m_nAddress &&
           oLeft.m_eType == oRight.m_eType && oLeft.m_bLowWordFirst == oRight.m_bLowWordFirst &&
           oLeft.m_bInput == oRight.m_bInput && oLeft.m_dScale == oRight.m_dScale &&
           oLeft.m_strUnit == oRight.m_strUnit;
}

std::string ReadRegister(std::string_view strText, Register& roRegister)
{
    const std::vector<std::string_view> vecWords = Words(strText);
    if (vecWords.size() < 2)
        return "needs an address and a type, such as 0x0000 u32";
    if (!KorReadText(vecWords[0], roRegister.m_nAddress))
        return "has an address " + Quoted(vecWords[0]) + " that is not in 0 to 65535";
    if (!ReadType(vecWords[1], roRegister.m_eType))
        return "has a type " + Quoted(vecWords[1]) +
               " that is none of u16, i16, u32, i32, u64, i64, f32";
    if (roRegister.m_nAddress + roRegister.Words() > ADDRESSES)
        return "reaches beyond the last register";
    Extras oExtras(roRegister);
    for (std::size_t i = 2; i < vecWords.size(); ++i) {
        std::string strWrong = oExtras.Take(vecWords[i]);
        if (!strWrong.empty())
            return strWrong;
    }
    return {};
}
