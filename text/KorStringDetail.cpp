#include "text/KorStringDetail.h"

std::string KorConcat(std::initializer_list<std::string_view> lstParts)
{
    std::string strWhole;
    for (const std::string_view strPart : lstParts)
        strWhole.append(strPart);
    return strWhole;
}
