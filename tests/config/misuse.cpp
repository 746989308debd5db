// Must not compile: IOX_Std has no specialisation for a plain number.

#include "config/KorTypedOptions.h"

void Exchange(CKorIniOptionExchange* pExchange, int& rnValue)
{
    IOX_Std<int>(pExchange, "A", "x", rnValue, 0);
}
