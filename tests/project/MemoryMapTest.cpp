#include "project/memorymap/MemoryMap.h"
#include "project/memorymap/MemoryMapElement.h"
#include "project/memorymap/MemoryMapOpenFiles.h"
#include "project/xml/MacroText.h"
#include "support/Pool.h"
#include "support/TempDir.h"

#include <QFile>

namespace {

QString q(const std::string& text)
{
    return QString::fromStdString(text);
}

// Gives a file another time than it had, whatever the clock's grain.
void touchLater(const std::string& path, int seconds)
{
    QFile file(q(path));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    file.setFileTime(QDateTime::currentDateTime().addSecs(seconds), QFileDevice::FileModificationTime);
}

std::string names(const QList<MemoryMapElement*>& list)
{
    std::string text;
    for (const MemoryMapElement* each : list)
        text += each->name().toStdString() + QString::asprintf("@%x ", each->address()).toStdString();
    return text;
}

} // namespace

TEST(MemoryMap, AddressesCountFromTheEnclosingElement)
{
    MemoryMap map;
    ASSERT_TRUE(map.loadFromString(
        "<Root><MemorySegment name=\"FLASH\" start=\"0x100\" size=\"0x200\" access=\"ReadOnly\" "
        "addressSpace=\"CODE\">"
        "<ProgramSection name=\"CODE\" start=\"+0x10\"/><MemorySegment name=\"INNER\" start=\"+16\"/>"
        "<RegisterGroup name=\"G\"><Register name=\"R\" start=\"+0x4\" register_type=\"unsigned short\">"
        "<BitField name=\"B\" start=\"3\" size=\"2\"/></Register></RegisterGroup>"
        "<RegisterGroup name=\"H\" start=\"0x40\"><Register name=\"S\" start=\"+0x4\" "
        "size=\"8\"/></RegisterGroup>"
        "</MemorySegment><MemorySegment name=\"RAM\" size=\"010\" access=\"None\"/><Other/></Root>"));
    EXPECT_EQ(names(map.getAllElements()),
              "@0 FLASH@100 CODE@110 INNER@110 G@0 R@104 B@3 H@40 S@44 RAM@0 @0 ");
    EXPECT_EQ(names(map.getSegments(true)), "FLASH@100 INNER@110 RAM@0 ");
    EXPECT_EQ(names(map.getSegments(false)), "FLASH@100 RAM@0 ");
    MemoryMapElement* flash = map.getSegment("FLASH");
    EXPECT_EQ(flash->size(), 0x200u);
    EXPECT_EQ(flash->addressSpace(), "CODE");
    EXPECT_TRUE(flash->isReadOnly());
    EXPECT_FALSE(flash->isWriteOnly() || flash->isNone());
    EXPECT_TRUE(map.getSegment("RAM")->isNone());
    EXPECT_EQ(map.getSegment("RAM")->size(), 8u);
    EXPECT_EQ(names(map.getSections(flash, false)), "CODE@110 ");
    EXPECT_TRUE(map.isReadOnly(map.getNamedElementOfType(flash, "R", MemoryMapElement::Register)));
    EXPECT_FALSE(map.isReadOnly(map.getSegment("RAM")));
    EXPECT_EQ(map.getSegment("NONE"), nullptr);
    MemoryMapElement* r = map.getNamedElementOfType(nullptr, "R", MemoryMapElement::Register);
    EXPECT_EQ(r->size(), 2u);
    EXPECT_EQ(r->getRegisterExpression(), "*(register unsigned short;*)0x104");
    EXPECT_EQ(r->firstMapElement()->getRegisterExpression(),
              "(register unsigned short;)(*(register unsigned short;*)0x104 & 0x18)");
    EXPECT_STREQ(map.getAllElements().last()->elementTypeAsString(), "Unsupported");
    flash->linkChildren();
    EXPECT_EQ(flash->firstSorted()->name(), "G");
    EXPECT_EQ(flash->firstSorted()->nextSorted()->name(), "H");
    EXPECT_EQ(names({map.clone(r)}), "R@104 ") << "a group without an address stands at its segment's";
}

TEST(MemoryMap, SettersWriteTheirForms)
{
    MemoryMap map;
    ASSERT_TRUE(map.loadFromString("<Root><MemorySegment/></Root>"));
    CurrentPool current(&map.pool());
    MemoryMapElement* segment = map.getSegments(false).first();
    segment->setLoad(true);
    EXPECT_EQ(segment->attributeText("load"), "Yes");
    EXPECT_TRUE(segment->load());
    segment->setLoad(false);
    EXPECT_EQ(segment->attributeText("load"), "No");
    segment->setStart(0xABC);
    segment->setSize(16);
    segment->setFill(0xFF);
    segment->setInputSections("*.text");
    EXPECT_EQ(segment->start(), "0xabc");
    EXPECT_EQ(segment->attributeText("size"), "0x10");
    EXPECT_EQ(segment->fill(), 0xFFu);
    EXPECT_FALSE(segment->hasAlignment());
    TempDir directory;
    ASSERT_TRUE(map.store(q(directory / "out.xml")));
    MemoryMap again;
    ASSERT_TRUE(again.load(q(directory / "out.xml"), "", false));
    EXPECT_EQ(names(again.getSegments(true)), "@abc ");
}

TEST(MemoryMap, ImportsJoinAtTheirPlace)
{
    TempDir directory;
    directory.write("sub/more.xml",
                    "<Root><MemorySegment name=\"$(N)\"/><Import filename=\"last.xml\"/></Root>");
    directory.write("sub/last.xml",
                    "<Root><if Big=\"1\"><MemorySegment name=\"L\" start=\"0x10\"/></if></Root>");
    std::string file =
        directory.write("map.xml", "<Root><MemorySegment name=\"A\"/><Import filename=\"sub/more.xml\"/>"
                                   "<MemorySegment name=\"Z\" start=\"x\"/></Root>");
    MemoryMap map;
    ASSERT_TRUE(map.load(q(file), "N=M;Big=1", true));
    EXPECT_EQ(names(map.getSegments(true)), "A@0 M@0 L@10 Z@0 ");
    EXPECT_EQ(map.warnings().size(), 1) << "the start that is no number";
    EXPECT_TRUE(map.upToDate());
    touchLater(directory / "sub/last.xml", 100);
    EXPECT_FALSE(map.upToDate());
    // A map that imports itself, and one that imports what is not there, still load.
    std::string self = directory.write("self.xml", "<Root><Import filename=\"self.xml\"/><Import/>"
                                                   "<MemorySegment name=\"A\"/></Root>");
    ASSERT_TRUE(map.load(q(self), "", true));
    EXPECT_FALSE(map.warnings().isEmpty());
    EXPECT_FALSE(map.getSegments(true).isEmpty());
    EXPECT_FALSE(map.load(q(directory / "none.xml"), "", true));
}

TEST(MemoryMap, OpenFilesAreReloadedWhenTheyChange)
{
    TempDir directory;
    std::string file = directory.write("map.xml", "<Root><MemorySegment name=\"$(MapName:x)\"/></Root>");
    const MacroText::Macros macros = {{"MapDir", q(directory.path())}, {"MapName", "one"}};
    MemoryMap* map = MemoryMapOpenFiles::getMemoryMapFile("$(MapDir)/map.xml", macros);
    ASSERT_NE(map, nullptr);
    EXPECT_EQ(names(map->getSegments(true)), "one@0 ");
    EXPECT_EQ(MemoryMapOpenFiles::getMemoryMapFile(q(file), macros), map);
    directory.write("map.xml", "<Root><MemorySegment name=\"two\"/></Root>");
    touchLater(file, 50);
    EXPECT_EQ(names(MemoryMapOpenFiles::getMemoryMapFile(q(file), macros)->getSegments(true)), "two@0 ");
    directory.write("map.xml", "<Root>");
    touchLater(file, 100);
    EXPECT_EQ(MemoryMapOpenFiles::getMemoryMapFile(q(file), macros), nullptr);
    EXPECT_EQ(MemoryMapOpenFiles::getMemoryMapFile("/no/such/map", macros), nullptr);
}
