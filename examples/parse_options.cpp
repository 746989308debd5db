// Takes a command line as GNU programs do, with help and version.
#include "app/KorOptionParser.h"

#include <cstdio>

int main(int argc, char** argv)
{
    bool bVerbose = false;
    unsigned int nSpeed = 9600;
    std::vector<std::string> vecDevices;
    CKorOptionParser oParser({"parse_options", "1.0", "", "Shows its options", "", nullptr});
    oParser.AddFlag("v,verbose", bVerbose, "tell more");
    oParser.AddOption("s,speed", "N", nSpeed, "bit/s (9600)");
    oParser.AddArgument("DEVICE", vecDevices, "the lines to open");
    const CKorOptionParser::EResult eResult = oParser.Parse(argc, argv);
    if (eResult == CKorOptionParser::PARSE_OK) {
        std::printf("%zu devices at %u bit/s%s\n", vecDevices.size(), nSpeed,
                    bVerbose ? ", verbose" : "");
        return 0;
    }
    const bool bWrong = eResult == CKorOptionParser::PARSE_WRONG;
    std::fputs(oParser.GetText().c_str(), bWrong ? stderr : stdout);
    return bWrong ? 2 : 0;
}
