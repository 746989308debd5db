#pragma once

// How names compare, and where a line that was read is placed. Not installed.

#include "config/KorOptionExchange.h"

#include <list>
#include <memory>
#include <string_view>
#include <unordered_map>

/// The name of an option, or of a section when the option is empty.
struct SKorIniName
{
    std::string_view m_strSection;
    std::string_view m_strOption;
};

/// The case rule: compares names and, with the same result for equal ones, hashes them.
class CKorIniNameRule
{
public:
    explicit CKorIniNameRule(bool bCaseSensitiv) : m_bCaseSensitiv(bCaseSensitiv) {}

    bool Equal(std::string_view strLeft, std::string_view strRight) const;
    bool operator()(const SKorIniName& oLeft, const SKorIniName& oRight) const;
    size_t operator()(const SKorIniName& oName) const;

private:
    char Fold(char c) const;

    bool m_bCaseSensitiv;
};

/// The first line with the name, in the sense of CKorIniOptionExchange::FindOption().
std::vector<CKorIniOptionExchange::SOptionLine*>::iterator
KorIniFindLine(std::vector<CKorIniOptionExchange::SOptionLine*>& apLines, CKorIniNameRule oRule,
               const SKorIniName& oName);

/// Lines in document order that grow line by line. The rules for placing a line are here; how
/// lines are kept and found is the derived class's business.
class CKorIniLines
{
public:
    using SOptionLine = CKorIniOptionExchange::SOptionLine;

    explicit CKorIniLines(CKorIniOptionExchange& oExchange) : m_oExchange(oExchange) {}
    virtual ~CKorIniLines() = default;

    /// As CKorIniOptionExchange::AddOptionLine().
    void Place(const std::string& strText, std::string& strCurrentSection);

protected:
    virtual bool Contains(const SKorIniName& oName) = 0;
    /// The section of the last line that has one; empty when none has.
    virtual std::string LastSection() = 0;
    virtual void Append(std::unique_ptr<SOptionLine> pLine) = 0;
    /// Inserts behind the first line of the line's section, which exists.
    virtual void InsertBehindFirst(std::unique_ptr<SOptionLine> pLine) = 0;

private:
    void CommentOut(SOptionLine& oLine, const std::string& strSection) const;

    CKorIniOptionExchange& m_oExchange;
};

/// The lines of an existing document. Placing a line costs time linear in their number.
class CKorIniDocumentLines : public CKorIniLines
{
public:
    CKorIniDocumentLines(CKorIniOptionExchange& oExchange, std::vector<SOptionLine*>& apLines,
                         CKorIniNameRule oRule)
        : CKorIniLines(oExchange), m_apLines(apLines), m_oRule(oRule)
    {
    }

protected:
    bool Contains(const SKorIniName& oName) override;
    std::string LastSection() override;
    void Append(std::unique_ptr<SOptionLine> pLine) override;
    void InsertBehindFirst(std::unique_ptr<SOptionLine> pLine) override;

private:
    std::vector<SOptionLine*>& m_apLines;
    const CKorIniNameRule m_oRule;
};

/// Lines with an index of their names. Placing a line costs constant time, so that reading a file
/// is linear whatever its shape.
class CKorIniIndexedLines : public CKorIniLines
{
public:
    CKorIniIndexedLines(CKorIniOptionExchange& oExchange, CKorIniNameRule oRule)
        : CKorIniLines(oExchange), m_mapFirst(0, oRule, oRule)
    {
    }

    /// Appends all lines to @p apLines, which owns them then.
    void MoveTo(std::vector<SOptionLine*>& apLines);

protected:
    bool Contains(const SKorIniName& oName) override;
    std::string LastSection() override;
    void Append(std::unique_ptr<SOptionLine> pLine) override;
    void InsertBehindFirst(std::unique_ptr<SOptionLine> pLine) override;

private:
    using LineList = std::list<std::unique_ptr<SOptionLine>>;

    LineList m_lstLines;
    /// First line of each name; the keys lie in the lines.
    std::unordered_map<SKorIniName, LineList::iterator, CKorIniNameRule, CKorIniNameRule>
        m_mapFirst;
    std::string_view m_strLastSection;
};
