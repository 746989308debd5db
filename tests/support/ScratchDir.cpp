#include "tests/support/ScratchDir.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <stdlib.h>

ScratchDir::ScratchDir() : ScratchDir(std::filesystem::temp_directory_path()) {}

ScratchDir::ScratchDir(const std::string& strParent)
{
    std::string strTemplate = strParent + "/tarvo-test-XXXXXX";
    if (mkdtemp(strTemplate.data()) == nullptr)
        ADD_FAILURE() << "cannot create " << strTemplate;
    m_strPath = strTemplate;
}

ScratchDir::~ScratchDir()
{
    std::error_code oIgnored;
    std::filesystem::remove_all(m_strPath, oIgnored);
}

std::string ReadFile(const std::string& strPath)
{
    std::ifstream oFile(strPath, std::ios::binary);
    EXPECT_TRUE(oFile.is_open()) << strPath;
    std::ostringstream oContent;
    oContent << oFile.rdbuf();
    return oContent.str();
}

void WriteFile(const std::string& strPath, const std::string& strContent)
{
    std::ofstream oFile(strPath, std::ios::binary | std::ios::trunc);
    oFile << strContent;
    EXPECT_TRUE(oFile.flush().good()) << strPath;
}
