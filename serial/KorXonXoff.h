#pragma once

/// @file
/// Settings of software flow control.

#include "KorExport.h"

/// @addtogroup serialline
/// @{

/// The XON/XOFF settings that CKorSerial::open takes.
///
/// The port uses the two characters only. Whether flow control is wanted and the two limits are
/// the application's own: handing a record to the port switches flow control on, whatever its
/// use flag says.
class TARVO_EXT_API CKorXonXoff
{
public:
    /// Leaves every setting undefined: fill them with the setters before reading any.
    CKorXonXoff();

    /// Takes the settings, with flow control wanted.
    /// @param nXonLimit   the XON limit
    /// @param nXoffLimit  the XOFF limit
    /// @param cXonChar    the character that lets the other side send on
    /// @param cXoffChar   the character that stops the other side
    CKorXonXoff(unsigned short nXonLimit, unsigned short nXoffLimit, char cXonChar, char cXoffChar);

    /// Sets whether flow control is wanted.
    void UseXonXoff(bool bUse) { m_bUseXonXoff = bUse; }
    /// Whether flow control is wanted.
    bool GetUseFlag() const { return m_bUseXonXoff; }

    /// Sets the XON limit.
    void SetXonLimit(unsigned short nLimit) { m_nXonLimit = nLimit; }
    /// The XON limit.
    unsigned short GetXonLimit() const { return m_nXonLimit; }

    /// Sets the XOFF limit.
    void SetXoffLimit(unsigned short nLimit) { m_nXoffLimit = nLimit; }
    /// The XOFF limit.
    unsigned short GetXOffLimit() const { return m_nXoffLimit; }

    /// Sets the character that lets the other side send on.
    void SetXonChar(char cXon) { m_cXonChar = cXon; }
    /// The character that lets the other side send on.
    char GetXonChar() const { return m_cXonChar; }

    /// Sets the character that stops the other side.
    void SetXoffChar(char cXoff) { m_cXoffChar = cXoff; }
    /// The character that stops the other side.
    char GetXoffChar() const { return m_cXoffChar; }

protected:
    bool m_bUseXonXoff;          ///< Flow control wanted.
    unsigned short m_nXonLimit;  ///< The XON limit, kept for the application.
    unsigned short m_nXoffLimit; ///< The XOFF limit, kept for the application.
    char m_cXonChar;             ///< The XON character.
    char m_cXoffChar;            ///< The XOFF character.
};

/// @}
