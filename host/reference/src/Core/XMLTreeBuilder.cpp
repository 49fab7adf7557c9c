#include "Core/XMLTreeBuilder.h"

#include <Core/IO/XMLDocument.h>

#include <algorithm>
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
    return encoding != nullptr && strncasecmp(encoding, "UTF", 3) != 0;
}

} // namespace

XMLTreeBuilder::XMLTreeBuilder(const std::shared_ptr<XMLSource>& source, bool recoded, bool keepText)
    : m_source(source), m_text(source->Text()), m_recoded(recoded), m_keepText(keepText),
      m_parser(XML_ParserCreate(recoded ? "UTF-8" : nullptr)), m_open(1)
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
    if (!self->m_recoded && IsSingleByte(encoding))
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

void XMLTreeBuilder::RefuseDoctype()
{
    // Expat tells of it when it has read some way into it.
    const std::size_t begin = m_text.rfind("<!DOCTYPE", CurrentByte());
    Refuse(std::min(begin, CurrentByte()), "document type declarations are refused");
}

void XMLTreeBuilder::Refuse(std::size_t byte, const std::string& reason)
{
    const XMLSource::Position here = m_source->PositionOf(byte);
    m_refusal = std::to_string(here.first) + ":" + std::to_string(here.second) + ": " + reason;
    XML_StopParser(m_parser.get(), XML_FALSE); // without effect once Expat has found a fault itself
}

std::size_t XMLTreeBuilder::CurrentByte() const
{
    const XML_Index index = XML_GetCurrentByteIndex(m_parser.get());
    return index < 0 ? m_text.size() : static_cast<std::size_t>(index);
}

} // namespace IO
} // namespace Core
