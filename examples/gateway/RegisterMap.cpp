#include "examples/gateway/RegisterMap.h"

#include "examples/modbus/ModbusRtu.h"

#include <algorithm>
#include <numeric>
#include <tuple>
#include <utility>

namespace
{

struct ReadyMap
{
    const char* m_pszName;
    RegisterMap m_vecRegisters;
};

const std::vector<ReadyMap>& ReadyMaps()
{
    static const std::vector<ReadyMap> MAPS = {
        {"simulated",
         {{"Energy", 0, REGISTER_U32, false, false, 0.001, "kWh"},
          {"Voltage", 2, REGISTER_U16, false, false, 0.1, "V"},
          {"Current", 3, REGISTER_U16, false, false, 0.01, "A"},
          {"Power", 4, REGISTER_U16, false, false, 1, "W"}}},
        {"float",
         {{"Voltage", 0x0000, REGISTER_F32, false, true, 1, "V"},
          {"Current", 0x0006, REGISTER_F32, false, true, 1, "A"},
          {"Power", 0x000C, REGISTER_F32, false, true, 1, "W"},
          {"Frequency", 0x0046, REGISTER_F32, false, true, 1, "Hz"},
          {"Energy", 0x0048, REGISTER_F32, false, true, 1, "kWh"}}},
        {"integer",
         {{"Voltage", 0x0000, REGISTER_I32, true, false, 0.1, "V"},
          {"Current", 0x0002, REGISTER_I32, true, false, 0.001, "A"},
          {"Power", 0x0004, REGISTER_I32, true, false, 0.1, "W"},
          {"Frequency", 0x0006, REGISTER_U16, false, false, 0.1, "Hz"},
          {"Energy", 0x0007, REGISTER_U32, true, false, 0.1, "kWh"}}},
    };
    return MAPS;
}

} // namespace

const RegisterMap* FindReadyMap(const std::string& strName)
{
    for (const ReadyMap& oMap : ReadyMaps()) {
        if (oMap.m_pszName == strName)
            return &oMap.m_vecRegisters;
    }
    return nullptr;
}

std::string ReadyMapNames()
{
    std::string strNames;
    for (const ReadyMap& oMap : ReadyMaps())
        strNames.append(strNames.empty() ? "" : ", ").append(oMap.m_pszName);
    return strNames;
}

RegisterPlan::RegisterPlan(RegisterMap vecRegisters)
    : m_vecRegisters(std::move(vecRegisters)), m_vecPlaces(m_vecRegisters.size())
{
    std::vector<std::size_t> vecOrder(m_vecRegisters.size());
    std::iota(vecOrder.begin(), vecOrder.end(), std::size_t{0});
    const auto fnKey = [this](std::size_t nRegister) {
        const Register& oRegister = m_vecRegisters[nRegister];
        return std::make_tuple(oRegister.m_bInput, oRegister.m_nAddress, nRegister);
    };
    std::sort(vecOrder.begin(), vecOrder.end(), [&fnKey](std::size_t nLeft, std::size_t nRight) {
        return fnKey(nLeft) < fnKey(nRight);
    });
    for (const std::size_t nRegister : vecOrder)
        Put(nRegister);
}

void RegisterPlan::Put(std::size_t nRegister)
{
    const Register& oRegister = m_vecRegisters[nRegister];
    const int nEnd = oRegister.m_nAddress + oRegister.Words();
    const bool bJoins =
        !m_vecBlocks.empty() && m_vecBlocks.back().m_bInput == oRegister.m_bInput &&
        oRegister.m_nAddress <= m_vecBlocks.back().m_nFirst + m_vecBlocks.back().m_nCount &&
        nEnd - m_vecBlocks.back().m_nFirst <= MODBUS_MAX_REGISTERS;
    if (!bJoins)
        m_vecBlocks.push_back({oRegister.m_bInput, oRegister.m_nAddress, 0});
    Block& oBlock = m_vecBlocks.back();
    oBlock.m_nCount =
        static_cast<std::uint16_t>(std::max<int>(oBlock.m_nCount, nEnd - oBlock.m_nFirst));
    m_vecPlaces[nRegister] = {m_vecBlocks.size() - 1,
                              static_cast<std::size_t>(oRegister.m_nAddress - oBlock.m_nFirst)};
}

std::vector<ReadingValue>
RegisterPlan::Values(const std::vector<std::vector<std::uint16_t>>& vecAnswers) const
{
    std::vector<ReadingValue> vecValues;
    for (std::size_t i = 0; i < m_vecRegisters.size(); ++i) {
        const Register& oRegister = m_vecRegisters[i];
        const std::uint16_t* const pWords =
            vecAnswers[m_vecPlaces[i].m_nBlock].data() + m_vecPlaces[i].m_nWord;
        vecValues.push_back({oRegister.m_strName, oRegister.Value(pWords), oRegister.Decimals(),
                             oRegister.m_strUnit});
    }
    return vecValues;
}
