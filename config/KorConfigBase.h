#pragma once

/// @file
/// What every source of options has in common.
///
/// Options come from the command line and from INI files. A source is a CKorConfigBase; an update
/// of a program's options builds an exchange object of the source's own kind over it and hands
/// that exchange to the source's typed `DoOptionExchange`, in which the program moves each option
/// between the exchange and a variable of its own. Sources and exchanges are not synchronised;
/// one thread uses them at a time.

#include "KorExport.h"

/// @addtogroup settings
/// @{

class CKorConfigExchange;

/// A source of options.
class TARVO_EXT_API CKorConfigBase
{
public:
    CKorConfigBase();
    virtual ~CKorConfigBase();

    /// Exchanges all options of the program with the source: builds an exchange over this
    /// object, passes it to the typed DoOptionExchange() and destroys it.
    /// @param bWriteBack  false reads the options, true writes them where the source can be written
    /// @return true
    virtual bool UpdateOptions(bool bWriteBack) = 0;

    /// Entry for an exchange whose kind only its creator knows. Does nothing here; each source
    /// passes the exchange on to its own typed overload, without checking its type.
    /// @param pExchange  an exchange of this source's kind
    virtual void DoOptionExchange(CKorConfigExchange* pExchange);
};

/// One exchange of options between a program and a source. It lives for one update.
class TARVO_EXT_API CKorConfigExchange
{
public:
    /// An unmodified exchange.
    /// @param bWriteBack  whether the exchange writes what was changed back to the source when
    ///                    it ends; false only reads
    explicit CKorConfigExchange(bool bWriteBack);

    /// An unmodified exchange that only reads, for exchanges that have no use for the flags.
    CKorConfigExchange();

    virtual ~CKorConfigExchange();

    /// True for a writing exchange, which takes the program's values; false for a reading one,
    /// which gives them.
    bool IsWriteBack() const;

protected:
    bool m_bModified;  ///< a value in the exchange's copy of the source was changed
    bool m_bWriteBack; ///< changed values go back to the source when the exchange ends
};

/// @}
