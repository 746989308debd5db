#include "serial/KorXonXoff.h"

// Empty instead of "= default", which would let CKorXonXoff() clear the members.
CKorXonXoff::CKorXonXoff() {}

CKorXonXoff::CKorXonXoff(unsigned short nXonLimit, unsigned short nXoffLimit, char cXonChar,
                         char cXoffChar)
    : m_bUseXonXoff(true),
      m_nXonLimit(nXonLimit),
      m_nXoffLimit(nXoffLimit),
      m_cXonChar(cXonChar),
      m_cXoffChar(cXoffChar)
{
}
