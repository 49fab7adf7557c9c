#include "Core/XMLTreeBuilder.h"

#include "Core/XMLTagScanner.h"

#include <Core/IO/XMLDocument.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>
#include <strings.h>

namespace Core
{
namespace IO
{

namespace
{

constexpr std::size_t kPieceBytes = 1048576; // lengths are int in Expat

/// Of the encodings that Expat reads, those with one byte a character. UTF-16 has been recoded before.
bool IsSingleByte(const char* encoding)
{
    return strncasecmp(encoding, "UTF", 3) != 0;
}

bool SameName(const char* one, const char* other)
{
    return strcasecmp(one, other) == 0;
}

/// Does Expat know it?
bool IsEncoding(const char* name)
{
    constexpr const char* kEncodings[] = {"UTF-8",    "UTF-16",     "UTF-16BE",
                                          "UTF-16LE", "ISO-8859-1", "US-ASCII"};
    return std::any_of(std::begin(kEncodings), std::end(kEncodings),
                       [name](const char* known) { return SameName(name, known); });
}

bool StartsWith(const std::string& text, std::size_t byte, const char* beginning)
{
    return text.compare(byte, std::strlen(beginning), beginning) == 0;
}

/// Where the document type declaration of a text that is well-formed up to there begins: before it are only
/// blanks, comments and instructions, which may contain anything.
std::size_t DoctypeByte(const std::string& text)
{
    std::size_t byte = text.find('<');
    while (byte < text.size() && !StartsWith(text, byte, "<!DOCTYPE"))
    {
        const bool comment = StartsWith(text, byte, "<!--");
        byte = text.find('<', text.find(comment ? "-->" : "?>", byte + (comment ? 4 : 2)));
    }
    return std::min(byte, text.size());
}

} // namespace

XMLTreeBuilder::XMLTreeBuilder(const std::shared_ptr<XMLSource>& source, const std::string& recoded,
                               bool keepText)
    : m_source(source), m_text(source->Text()), m_recoded(recoded), m_keepText(keepText),
      m_parser(XML_ParserCreate(recoded.empty() ? nullptr : "UTF-8")), m_open(1)
{
    if (m_parser == nullptr)
        throw std::bad_alloc();
    InstallHandlers();
}

void XMLTreeBuilder::InstallHandlers()
{
    XML_SetUserData(m_parser.get(), this);
    XML_SetElementHandler(m_parser.get(), &StartElement, &EndElement);
    XML_SetXmlDeclHandler(m_parser.get(), &Declaration);
    XML_SetStartDoctypeDeclHandler(m_parser.get(), &StartDoctype);
    if (m_keepText)
        XML_SetCharacterDataHandler(m_parser.get(), &CharacterData);
}

bool XMLTreeBuilder::Build(XMLNode& root, std::string& error)
{
    const bool parsed = ParseAll();
    if (m_exception != nullptr)
        std::rethrow_exception(m_exception);
    if (XML_GetErrorCode(m_parser.get()) == XML_ERROR_NO_MEMORY)
        throw std::bad_alloc();
    if (parsed)
    {
        root = std::move(m_open.front());
        return true;
    }
    if (m_refusal.empty())
        Refuse(CurrentByte(), XML_ErrorString(XML_GetErrorCode(m_parser.get())));
    error = m_refusal;
    return false;
}

bool XMLTreeBuilder::ParseAll()
{
    std::size_t done = 0;
    bool good = true;
    bool last = false;
    while (good && !last)
    {
        const std::size_t piece = std::min(kPieceBytes, m_text.size() - done);
        last = done + piece == m_text.size();
        good =
            XML_Parse(m_parser.get(), m_text.data() + done, static_cast<int>(piece), last) == XML_STATUS_OK;
        done += piece;
    }
    return good;
}

template <typename Action> void XMLTreeBuilder::Guarded(Action action)
{
    if (m_exception || !m_refusal.empty())
        return; // Expat finishes the tag after it was told to stop
    try
    {
        action();
    }
    catch (...)
    {
        m_exception = std::current_exception();
        XML_StopParser(m_parser.get(), XML_FALSE);
    }
}

void XMLTreeBuilder::StartElement(void* builder, const XML_Char* name, const XML_Char** attributes)
{
    const auto self = static_cast<XMLTreeBuilder*>(builder);
    self->Guarded([&] { self->OpenElement(name, attributes); });
}

void XMLTreeBuilder::EndElement(void* builder, const XML_Char*)
{
    const auto self = static_cast<XMLTreeBuilder*>(builder);
    self->Guarded([&] { self->CloseElement(); });
}

void XMLTreeBuilder::CharacterData(void* builder, const XML_Char* text, int length)
{
    const auto self = static_cast<XMLTreeBuilder*>(builder);
    self->Guarded([&] { self->m_open.back().m_text.append(text, static_cast<std::size_t>(length)); });
}

void XMLTreeBuilder::Declaration(void* builder, const XML_Char*, const XML_Char* encoding, int)
{
    const auto self = static_cast<XMLTreeBuilder*>(builder);
    if (encoding == nullptr)
        return;
    if (!self->m_recoded.empty())
        self->Guarded([&] { self->CheckDeclared(encoding); });
    else if (IsSingleByte(encoding))
        self->m_source->SingleByte();
}

void XMLTreeBuilder::StartDoctype(void* builder, const XML_Char*, const XML_Char*, const XML_Char*, int)
{
    const auto self = static_cast<XMLTreeBuilder*>(builder);
    self->Guarded([&] { self->RefuseDoctype(); });
}

void XMLTreeBuilder::OpenElement(const char* name, const char** attributes)
{
    if (m_open.size() > static_cast<std::size_t>(XMLDocument::kMaximumDepth))
    {
        Refuse(CurrentByte(), "elements nested too deep");
        return;
    }
    XMLNode node;
    node.m_name = name;
    node.m_source = m_source;
    node.m_byte = CurrentByte();
    for (; *attributes != nullptr; attributes += 2)
        node.m_attributes.emplace(attributes[0], attributes[1]);
    m_open.push_back(std::move(node));
}

void XMLTreeBuilder::CloseElement()
{
    XMLNode node = std::move(m_open.back());
    m_open.pop_back();
    m_open.back().m_children.push_back(std::move(node));
}

/// Expat, which was told what it gets, does not look at what is declared.
void XMLTreeBuilder::CheckDeclared(const char* encoding)
{
    if (!SameName("UTF-16", encoding) && !SameName(m_recoded.c_str(), encoding))
        Refuse(DeclaredByte(), XML_ErrorString(IsEncoding(encoding) ? XML_ERROR_INCORRECT_ENCODING
                                                                    : XML_ERROR_UNKNOWN_ENCODING));
}

/// Where the name of the declared encoding stands, as Expat gives it for other texts.
std::size_t XMLTreeBuilder::DeclaredByte() const
{
    XMLTagScanner scanner(m_text, m_text.find('<'));
    std::string name;
    std::size_t byte = 0;
    while (scanner.NextAttribute(name, byte) && name != "encoding")
    {
    }
    return m_text.find_first_of("\"'", byte) + 1;
}

void XMLTreeBuilder::RefuseDoctype()
{
    Refuse(DoctypeByte(m_text), "document type declarations are refused"); // Expat is some way into it
}

void XMLTreeBuilder::Refuse(std::size_t byte, const std::string& reason)
{
    const XMLSource::Position here = m_source->PositionOf(byte);
    m_refusal = std::to_string(here.first) + ":" + std::to_string(here.second) + ": " + reason;
    XML_StopParser(m_parser.get(), XML_FALSE); // without effect once Expat has found a fault itself
}

std::size_t XMLTreeBuilder::CurrentByte() const
{
    // Of an empty text -1 with some versions, 0 with others.
    const XML_Index index = XML_GetCurrentByteIndex(m_parser.get());
    return static_cast<std::size_t>(std::max<XML_Index>(index, 0));
}

} // namespace IO
} // namespace Core
