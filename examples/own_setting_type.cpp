// Gives a type of the program's own a text, for settings, command lines and lists alike.
#include "config/KorTextValue.h"

#include <cstdio>

namespace meter
{

struct Register
{
    unsigned char nStation;
    unsigned short nNumber;
};

bool KorReadText(std::string_view strText, Register& rRegister) // "7/1024"
{
    const size_t nSlash = strText.find('/');
    Register oRead{};
    if (nSlash == std::string_view::npos ||
        !::KorReadText(strText.substr(0, nSlash), oRead.nStation) ||
        !::KorReadText(strText.substr(nSlash + 1), oRead.nNumber))
        return false;
    rRegister = oRead;
    return true;
}

std::string KorWriteText(const Register& oRegister)
{
    return ::KorWriteText(oRegister.nStation) + "/" + ::KorWriteText(oRegister.nNumber);
}

} // namespace meter

int main(int argc, char** argv)
{
    std::vector<meter::Register> vecRegisters;
    if (argc < 2 || !KorReadText(argv[1], vecRegisters)) // "1/0, 1/2, 7/1024"
        return 2;
    std::printf("%zu: %s\n", vecRegisters.size(), KorWriteText(vecRegisters).c_str());
}
