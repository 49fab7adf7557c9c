#include <MPI/BAtomC.h>
#include <MPI/BDictionaryC.h>
#include <MPI/BEncoderC.h>
#include <MPI/BListC.h>

#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <string>
#include <utility>

namespace
{

std::string Encoded(const BElementC& element)
{
    BEncoderC encoder;
    encoder.Element(element);
    return encoder.Bytes();
}

TEST(HostElements, AnAtomHoldsANumber)
{
    const BAtomC atom(std::numeric_limits<std::int64_t>::min());
    EXPECT_TRUE(atom.IsInteger());
    EXPECT_EQ(atom.Integer(), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(atom.Text(), "");
}

TEST(HostElements, AnAtomHoldsATextOfAnyBytes)
{
    const std::string text("a\0\xFF:", 4);
    const BAtomC atom(text);
    EXPECT_FALSE(atom.IsInteger());
    EXPECT_EQ(atom.Text(), text);
    EXPECT_EQ(atom.Integer(), 0);
}

TEST(HostElements, AListKeepsTheOrderOfAppending)
{
    BListC list;
    list.Append(std::make_unique<BAtomC>(3, &list));
    list.Append(std::make_unique<BAtomC>("text", &list));
    list.Append(std::make_unique<BListC>());
    ASSERT_EQ(list.Size(), 3u);
    EXPECT_EQ(list.At(0)->AsAtom()->Integer(), 3);
    EXPECT_EQ(list.At(1)->AsAtom()->Text(), "text");
    EXPECT_EQ(list.At(2), list.Elements()[2].get());
}

TEST(HostElements, AListHasRoomForSixteenFromTheStart)
{
    const BListC list;
    EXPECT_GE(list.Elements().capacity(), 16u);
    EXPECT_EQ(list.Size(), 0u);
}

TEST(HostElements, ADictionaryHasOneElementPerKey)
{
    BDictionaryC dictionary;
    dictionary.Insert("key", std::make_unique<BAtomC>(1));
    dictionary.Insert("other", std::make_unique<BAtomC>(2));
    dictionary.Insert("key", std::make_unique<BAtomC>(3));
    EXPECT_EQ(dictionary.Size(), 2u);
    EXPECT_EQ(dictionary.Find("key")->AsAtom()->Integer(), 3);
    EXPECT_EQ(dictionary.Elements().at("other")->AsAtom()->Integer(), 2);
}

TEST(HostElements, WhatIsNotThereIsNull)
{
    const BListC list;
    const BDictionaryC dictionary;
    EXPECT_EQ(list.At(0), nullptr);
    EXPECT_EQ(dictionary.Find("none"), nullptr);
}

/// Tells when it is destroyed.
class Watched : public BAtomC
{
public:
    explicit Watched(int& alive) : BAtomC(0), m_alive(alive) { ++m_alive; }
    ~Watched() override { --m_alive; }
    Watched(const Watched&) = delete;
    Watched& operator=(const Watched&) = delete;

private:
    int& m_alive;
};

TEST(HostElements, ListsAndDictionariesDestroyTheirElementsThroughAnyBase)
{
    int alive = 0;
    auto list = std::make_unique<BListC>();
    list->Append(std::make_unique<Watched>(alive));
    auto dictionary = std::make_unique<BDictionaryC>();
    dictionary->Insert("a", std::move(list));
    dictionary->Insert("b", std::make_unique<Watched>(alive));
    EXPECT_EQ(alive, 2);
    dictionary->Insert("b", std::make_unique<BAtomC>(0));
    EXPECT_EQ(alive, 1);
    std::unique_ptr<BElementC> base = std::move(dictionary);
    base.reset();
    EXPECT_EQ(alive, 0);
}

TEST(HostElements, RememberTheParentGivenToTheConstructor)
{
    BListC parent;
    EXPECT_EQ(BAtomC(1, &parent).Parent(), &parent);
    EXPECT_EQ(BAtomC("text", &parent).Parent(), &parent);
    EXPECT_EQ(BListC(&parent).Parent(), &parent);
    EXPECT_EQ(BDictionaryC(&parent).Parent(), &parent);
    EXPECT_EQ(BAtomC(1).Parent(), nullptr);
    EXPECT_EQ(parent.Size(), 0u);
}

TEST(HostElements, HaveWhateverTheyWerePutIntoAsParent)
{
    BListC list;
    list.Append(std::make_unique<BAtomC>(1));
    EXPECT_EQ(list.At(0)->Parent(), &list);
    BDictionaryC dictionary;
    dictionary.Insert("key", std::make_unique<BAtomC>(1, &list));
    EXPECT_EQ(dictionary.Find("key")->Parent(), &dictionary);
}

TEST(HostElements, AreNullAsAnythingElse)
{
    BListC list;
    BDictionaryC dictionary;
    BAtomC atom(1);
    EXPECT_EQ(atom.AsAtom(), &atom);
    EXPECT_EQ(atom.AsList(), nullptr);
    EXPECT_EQ(atom.AsDictionary(), nullptr);
    EXPECT_EQ(std::as_const(atom).AsDictionary(), nullptr);
    EXPECT_EQ(list.AsAtom(), nullptr);
    EXPECT_EQ(list.AsList(), &list);
    EXPECT_EQ(list.AsDictionary(), nullptr);
    EXPECT_EQ(dictionary.AsAtom(), nullptr);
    EXPECT_EQ(dictionary.AsList(), nullptr);
    EXPECT_EQ(dictionary.AsDictionary(), &dictionary);
}

TEST(HostEncoder, WritesNumbers)
{
    EXPECT_EQ(Encoded(BAtomC(-5)), "i-5e");
    EXPECT_EQ(Encoded(BAtomC(0)), "i0e");
    EXPECT_EQ(Encoded(BAtomC(std::numeric_limits<std::int64_t>::max())), "i9223372036854775807e");
    EXPECT_EQ(Encoded(BAtomC(std::numeric_limits<std::int64_t>::min())), "i-9223372036854775808e");
}

TEST(HostEncoder, WritesTexts)
{
    EXPECT_EQ(Encoded(BAtomC("text")), "4:text");
    EXPECT_EQ(Encoded(BAtomC("")), "0:");
    EXPECT_EQ(Encoded(BAtomC("ten:bytes!")), "10:ten:bytes!");
}

TEST(HostEncoder, WritesListsInTheirOrder)
{
    BListC list;
    EXPECT_EQ(Encoded(list), "le");
    list.Append(std::make_unique<BAtomC>(2));
    list.Append(std::make_unique<BListC>());
    list.Append(std::make_unique<BAtomC>(1));
    EXPECT_EQ(Encoded(list), "li2elei1ee");
}

TEST(HostEncoder, WritesDictionariesInTheOrderOfTheirKeysBytes)
{
    BDictionaryC dictionary;
    EXPECT_EQ(Encoded(dictionary), "de");
    for (const char* const key : {"name", "\xC3\xA9", "args", "arg", "Z", ""})
        dictionary.Insert(key, std::make_unique<BAtomC>(1));
    EXPECT_EQ(Encoded(dictionary), "d0:i1e1:Zi1e3:argi1e4:argsi1e4:namei1e2:\xC3\xA9i1ee");
}

TEST(HostEncoder, WritesMessagesStepByStep)
{
    BEncoderC encoder;
    encoder.BeginDictionary();
    encoder.Text("args");
    encoder.BeginList();
    encoder.Integer(265243);
    encoder.Element(BAtomC(2));
    encoder.Integer(0);
    encoder.End();
    encoder.Text("name");
    encoder.Text("RaiseError");
    encoder.End();
    EXPECT_EQ(encoder.Bytes(), "d4:argsli265243ei2ei0ee4:name10:RaiseErrore");
}

TEST(HostEncoder, CountsTheLevelsOfTheDeepestElement)
{
    BEncoderC encoder;
    encoder.Integer(1);
    EXPECT_EQ(encoder.Depth(), 0);
    encoder.BeginList();
    encoder.BeginDictionary();
    encoder.End();
    encoder.BeginDictionary();
    encoder.End();
    encoder.End();
    EXPECT_EQ(encoder.Depth(), 2);
}

TEST(HostEncoder, ClearStartsAnew)
{
    BEncoderC encoder;
    encoder.BeginList();
    encoder.Clear();
    EXPECT_EQ(encoder.Bytes(), "");
    EXPECT_EQ(encoder.Depth(), 0);
    encoder.Integer(1);
    EXPECT_EQ(encoder.Depth(), 0);
}

} // namespace
