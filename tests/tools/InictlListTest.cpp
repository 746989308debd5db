// What a file means: as text, as JSON, and beside another file.

#include "tests/tools/InictlTest.h"

namespace
{

/// What Python reads from the JSON text, as it prints it.
std::string ReadByPython(const std::string& strJson)
{
    const ChildResult oResult = RunProgram(
        {"python3", "-c",
         "import json,sys; sys.stdout.reconfigure(encoding='utf-8'); "
         "print(json.loads(sys.stdin.buffer.read().decode('utf-8'), object_pairs_hook=list))"},
        strJson);
    EXPECT_EQ("", oResult.strErr) << strJson;
    return oResult.strOut;
}

TEST_F(Inictl, ListsAllThatAFileMeans)
{
    WriteFile(m_strFile, "# c\n[b]\ny=1\nx=\"two words\"\n[A]\n[B]\nx=3\nz=\nodd\n[C]\n[]\n");
    const ChildResult oResult = Run({"list", "FILE"});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ("[b] y=1\n[b] x=two words\n[B] z=\n[A]\n[C]\n", oResult.strOut);
    EXPECT_EQ("[b] y=1\n[b] x=two words\n[A]\n[B] x=3\n[B] z=\n[C]\n",
              Run({"-c", "list", "FILE"}).strOut);
}

TEST_F(Inictl, ListsAsJsonWhatReadersGive)
{
    WriteFile(m_strFile, "top=0\n[b]\ny=1\nx=\"two words\"\n[A]\n[B]\nx=3\nz=\nodd\n[C]\n[]\n");
    const ChildResult oResult = Run({"list", "--json", "FILE"});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ("{\n  \"\": {\n    \"top\": \"0\"\n  },\n"
              "  \"b\": {\n    \"y\": \"1\",\n    \"x\": \"two words\",\n    \"z\": \"\"\n  },\n"
              "  \"A\": {},\n  \"C\": {}\n}\n",
              oResult.strOut);
    EXPECT_EQ("[('', [('top', '0')]), ('b', [('y', '1'), ('x', 'two words'), ('z', '')]), "
              "('A', []), ('C', [])]\n",
              ReadByPython(oResult.strOut));
    EXPECT_EQ(oResult.strOut, Run({"list", "FILE", "--json"}).strOut);
}

TEST_F(Inictl, ListsAnEmptyFile)
{
    WriteFile(m_strFile, "");
    EXPECT_EQ("", Run({"list", "FILE"}).strOut);
    EXPECT_EQ("{}\n", Run({"list", "--json", "FILE"}).strOut);
    WriteFile(m_strFile, "# c\n[]\n");
    EXPECT_EQ("{}\n", Run({"list", "--json", "FILE"}).strOut);
}

TEST_F(Inictl, ListsEveryByteAsValidJson)
{
    std::string strContent = "[S\xFC\"\\]\n";
    for (int nByte = 0; nByte < 256; ++nByte) {
        const char cByte = static_cast<char>(nByte);
        if (cByte != '\n' && cByte != '#')
            strContent += std::string("v") + std::to_string(nByte) + "=x" + cByte + "y\n";
    }
    WriteFile(m_strFile, strContent);
    const ChildResult oPython = RunProgram(
        {"python3", "-c",
         "import json,sys\n"
         "sections = json.loads(sys.stdin.buffer.read().decode('utf-8'))\n"
         "assert list(sections) == ['S\u00fc\"\\\\'], sections\n"
         "assert list(sections.values())[0] == {\n"
         "    'v%d' % n: 'x%cy' % n for n in range(256) if n not in b'\\n#'}, sections\n"},
        Run({"list", "--json", "FILE"}).strOut);
    EXPECT_EQ("", oPython.strErr);
}

TEST_F(Inictl, ListsUtf8AsItIs)
{
    // A good sequence of each length, then overlong ones, a surrogate, one beyond the last
    // character and cut ones.
    WriteFile(m_strFile, "a=\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80\xED\x9F\xBF\xF4\x8F\xBF\xBF\n"
                         "b=\xC0\xAF\xE0\x9F\xBF\xF0\x8F\xBF\xBF\n"
                         "c=\xED\xA0\x80\xF4\x90\x80\x80\xF5\x80\x80\x80\n"
                         "d=\xE2\x82\ne=\xC3\n");
    const std::string strJson = Run({"list", "--json", "FILE"}).strOut;
    EXPECT_EQ("{\n  \"\": {\n"
              "    \"a\": \"\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80\xED\x9F\xBF\xF4\x8F\xBF\xBF\",\n"
              "    \"b\": \"\\u00c0\\u00af\\u00e0\\u009f\\u00bf\\u00f0\\u008f\\u00bf\\u00bf\",\n"
              "    \"c\": "
              "\"\\u00ed\\u00a0\\u0080\\u00f4\\u0090\\u0080\\u0080\\u00f5\\u0080\\u0080\\u0080\",\n"
              "    \"d\": \"\\u00e2\\u0082\",\n    \"e\": \"\\u00c3\"\n  }\n}\n",
              strJson);
    EXPECT_NE("", ReadByPython(strJson));
}

TEST_F(Inictl, ListTakesOptionsOfItsOwn)
{
    EXPECT_EQ("inictl list: argument 'FILE' is missing (try --help)\n", Run({"list"}).strErr);
    EXPECT_EQ("inictl list: unknown option '--xml' (try --help)\n",
              Run({"list", "--xml", "FILE"}).strErr);
    EXPECT_EQ("inictl list: unexpected argument 'b' (try --help)\n",
              Run({"list", "FILE", "b"}).strErr);
    EXPECT_EQ(2, Run({"list", "FILE", "b"}).nExitStatus);
    const ChildResult oHelp = Run({"list", "--help"});
    EXPECT_EQ(0, oHelp.nExitStatus);
    EXPECT_NE(std::string::npos, oHelp.strOut.find("--json"));
    ExpectError({"list", "--", "--json"}, "--json: No such file or directory");
}

TEST_F(Inictl, FilesOfOneMeaningDoNotDiffer)
{
    const std::string strOther = m_oDir.File("other.ini");
    WriteFile(m_strFile, "top=1\n[A]\nx=1\ny=two words\n[B]\n");
    WriteFile(strOther, "# c\nTOP = 1\n[b] # c\n[a]\ny=\"two words\" # c\nx=1\nx=2\nodd\n[B]\n[]");
    const ChildResult oResult = Run({"diff", "FILE", strOther});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ("", oResult.strOut + oResult.strErr);
    EXPECT_EQ(1, Run({"-c", "diff", "FILE", strOther}).nExitStatus);
}

TEST_F(Inictl, TellsInWhatFilesDiffer)
{
    const std::string strOther = m_oDir.File("other.ini");
    WriteFile(m_strFile, "[A]\nx=1\ny=2\n[Gone]\n[Filled]\n[C]\nz=\n");
    WriteFile(strOther, "[New]\n[A]\nx=3\n[Filled]\na=1\n[C]\nz=\nw=\n");
    const ChildResult oResult = Run({"diff", "FILE", strOther});
    EXPECT_EQ(1, oResult.nExitStatus);
    EXPECT_EQ("", oResult.strErr);
    EXPECT_EQ("-[A] x=1\n+[A] x=3\n-[A] y=2\n-[Gone]\n+[New]\n+[Filled] a=1\n+[C] w=\n",
              oResult.strOut);
}

} // namespace
