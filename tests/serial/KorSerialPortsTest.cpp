#include "serial/KorSerialPortsDetail.h"
#include "tests/support/ScratchDir.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

/// A tree of files as the kernel and the device manager make it.
class FakeSystem
{
public:
    std::string Root() const { return m_oDir.Path(); }

    void Folder(const std::string& strName) const
    {
        std::size_t nEnd = 0;
        do {
            nEnd = strName.find('/', nEnd + 1);
            mkdir((Root() + strName.substr(0, nEnd)).c_str(), 0755);
        } while (nEnd != std::string::npos);
    }
    void File(const std::string& strName, const std::string& strContent) const
    {
        Folder(strName.substr(0, strName.rfind('/')));
        WriteFile(Root() + strName, strContent);
    }
    void Link(const std::string& strName, const std::string& strTarget) const
    {
        Folder(strName.substr(0, strName.rfind('/')));
        ASSERT_EQ(0, symlink((Root() + strTarget).c_str(), (Root() + strName).c_str()));
    }
    /// A terminal with a device behind it.
    void Port(const std::string& strName, const std::string& strDevice,
              const std::string& strDriver) const
    {
        Folder(strDevice);
        Folder("/sys/bus/drivers/" + strDriver);
        Link("/sys/class/tty/" + strName + "/device", strDevice);
        Link(strDevice + "/driver", "/sys/bus/drivers/" + strDriver);
        File("/dev/" + strName, "");
    }
    std::vector<SKorSerialPort> List() const
    {
        std::vector<SKorSerialPort> vecPorts(3); // to be replaced
        KorListSerialPortsBelow(Root(), vecPorts);
        return vecPorts;
    }

private:
    ScratchDir m_oDir;
};

std::string NamesOf(const std::vector<SKorSerialPort>& vecPorts)
{
    std::string strNames;
    for (const SKorSerialPort& oPort : vecPorts)
        strNames += oPort.m_strDevice + " ";
    return strNames;
}

} // namespace

TEST(KorSerialPorts, AMachineWithoutPortsHasNone)
{
    const FakeSystem oSystem;
    EXPECT_EQ("", NamesOf(oSystem.List()));
    oSystem.Folder("/sys/class/tty");
    EXPECT_EQ("", NamesOf(oSystem.List()));
}

TEST(KorSerialPorts, ListsPortsWithHardwareSortedByNameAndNumber)
{
    const FakeSystem oSystem;
    for (const char* pszName : {"ttyUSB10", "ttyUSB2", "ttyS1", "ttyS0", "ttyAMA0", "ttyUSB1"})
        oSystem.Port(pszName, std::string("/sys/devices/") + pszName, "any");
    EXPECT_EQ("/dev/ttyAMA0 /dev/ttyS0 /dev/ttyS1 /dev/ttyUSB1 /dev/ttyUSB2 /dev/ttyUSB10 ",
              NamesOf(oSystem.List()));
}

TEST(KorSerialPorts, LeavesOutConsolesAndEmptySlots)
{
    const FakeSystem oSystem;
    oSystem.Folder("/sys/class/tty/tty0");
    oSystem.Folder("/sys/class/tty/console");
    oSystem.Port("ttyS0", "/sys/devices/pnp/ttyS0", "serial");
    oSystem.File("/sys/class/tty/ttyS0/type", "4\n");
    oSystem.Port("ttyS1", "/sys/devices/platform/ttyS1", "serial8250");
    oSystem.File("/sys/class/tty/ttyS1/type", "0\n");
    EXPECT_EQ("/dev/ttyS0 ", NamesOf(oSystem.List()));
}

TEST(KorSerialPorts, DescribesAnAdapterOnUsb)
{
    const FakeSystem oSystem;
    const std::string strUsb = "/sys/devices/pci0/usb1/1-1";
    oSystem.Port("ttyUSB0", strUsb + "/1-1:1.0/ttyUSB0", "ftdi_sio");
    oSystem.File(strUsb + "/idVendor", "1234\n");
    oSystem.File(strUsb + "/manufacturer", "Good Cables\n");
    oSystem.File(strUsb + "/product", "Long Cable\n");
    oSystem.File(strUsb + "/serial", "A1B2\n");
    oSystem.File(strUsb + "/../idVendor", "9999\n");
    oSystem.File(strUsb + "/../manufacturer", "of the hub\n");
    oSystem.Link("/dev/serial/by-path/pci-0-usb", "/dev/ttyUSB0");
    oSystem.Link("/dev/serial/by-id/usb-Other", "/dev/ttyUSB1");
    oSystem.Link("/dev/serial/by-id/usb-Good_Cables", "/dev/ttyUSB0");
    const std::vector<SKorSerialPort> vecPorts = oSystem.List();
    ASSERT_EQ(1U, vecPorts.size());
    EXPECT_EQ("/dev/ttyUSB0", vecPorts[0].m_strDevice);
    EXPECT_EQ("ftdi_sio", vecPorts[0].m_strDriver);
    EXPECT_EQ("Good Cables", vecPorts[0].m_strVendor);
    EXPECT_EQ("Long Cable", vecPorts[0].m_strProduct);
    EXPECT_EQ("A1B2", vecPorts[0].m_strSerialNumber);
    EXPECT_EQ("/dev/serial/by-id/usb-Good_Cables", vecPorts[0].m_strStableName);
}

TEST(KorSerialPorts, WhatIsUnknownIsEmpty)
{
    const FakeSystem oSystem;
    oSystem.Folder("/sys/devices/bare");
    oSystem.Link("/sys/class/tty/ttyX0/device", "/sys/devices/bare");
    oSystem.Port("ttyUSB0", "/sys/devices/usb1/1-1/1-1:1.0", "cdc_acm");
    oSystem.File("/sys/devices/usb1/1-1/idVendor", "1234\n");
    oSystem.Link("/dev/serial/by-path/pci-0-usb", "/dev/ttyUSB0");
    const std::vector<SKorSerialPort> vecPorts = oSystem.List();
    ASSERT_EQ(2U, vecPorts.size());
    for (const SKorSerialPort& oPort : vecPorts)
        EXPECT_EQ("", oPort.m_strVendor + oPort.m_strProduct + oPort.m_strSerialNumber);
    EXPECT_EQ("/dev/serial/by-path/pci-0-usb", vecPorts[0].m_strStableName);
    EXPECT_EQ("", vecPorts[1].m_strDriver);
    EXPECT_EQ("", vecPorts[1].m_strStableName);
}

TEST(KorSerialPorts, TellsTheDriverBehindTheKernelsSerialCore)
{
    const FakeSystem oSystem;
    const std::string strDevice = "/sys/devices/platform/uart";
    oSystem.Port("ttyAMA0", strDevice + "/uart:0/uart:0.0", "port");
    oSystem.Folder("/sys/bus/serial-base");
    oSystem.Link(strDevice + "/uart:0/subsystem", "/sys/bus/serial-base");
    oSystem.Link(strDevice + "/uart:0/uart:0.0/subsystem", "/sys/bus/serial-base");
    oSystem.Folder("/sys/bus/drivers/pl011");
    oSystem.Link(strDevice + "/driver", "/sys/bus/drivers/pl011");
    ASSERT_EQ(1U, oSystem.List().size());
    EXPECT_EQ("pl011", oSystem.List()[0].m_strDriver);
}

TEST(KorSerialPorts, NamesWithAFolderAreWrittenWithIt)
{
    const FakeSystem oSystem;
    oSystem.Port("rack!tty1", "/sys/devices/rack", "any");
    EXPECT_EQ("/dev/rack/tty1 ", NamesOf(oSystem.List()));
}

TEST(KorSerialPorts, NumbersInNamesCompareAsNumbers)
{
    const std::vector<std::string> vecSorted = {"",
                                                "a",
                                                "a1",
                                                "a1b",
                                                "a02",
                                                "a10",
                                                "a10b2",
                                                "a10b10",
                                                "a99999999999999999998",
                                                "a99999999999999999999",
                                                "ab",
                                                "b"};
    for (std::size_t i = 0; i < vecSorted.size(); ++i) {
        for (std::size_t j = 0; j < vecSorted.size(); ++j)
            EXPECT_EQ(i < j, KorIsNameBefore(vecSorted[i], vecSorted[j]))
                << vecSorted[i] << " " << vecSorted[j];
    }
}

TEST(KorSerialPorts, ThisMachinesListHasNoPseudoTerminals)
{
    std::vector<SKorSerialPort> vecPorts(1);
    KorListSerialPorts(vecPorts);
    for (const SKorSerialPort& oPort : vecPorts) {
        EXPECT_EQ(0U, oPort.m_strDevice.rfind("/dev/", 0));
        EXPECT_NE(0U, oPort.m_strDevice.rfind("/dev/pts", 0));
    }
}
