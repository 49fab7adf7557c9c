#ifndef CORE_XMLTREEBUILDER_H
#define CORE_XMLTREEBUILDER_H

#include "Core/XMLSource.h"

#include <Core/IO/XMLNode.h>

#include <exception>
#include <expat.h>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace Core
{
namespace IO
{

/// Turns a text into nodes, once. Expat is used here and nowhere else.
class XMLTreeBuilder
{
public:
    /// @param source    kept by the nodes; is told if its text is not UTF-8
    /// @param recoded   the encoding that the text had before it was made UTF-8; empty: it is as it was. What
    /// it
    ///                  declares has to agree with that
    /// @param keepText  keep character data?
    XMLTreeBuilder(const std::shared_ptr<XMLSource>& source, const std::string& recoded, bool keepText);

    /// @param root   gets the children if all went well, is untouched otherwise
    /// @param error  gets "line:column: reason" otherwise
    /// @return false if the text was refused
    bool Build(XMLNode& root, std::string& error);

private:
    struct FreeParser
    {
        void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
    };

    static void XMLCALL StartElement(void* builder, const XML_Char* name, const XML_Char** attributes);
    static void XMLCALL EndElement(void* builder, const XML_Char* name);
    static void XMLCALL CharacterData(void* builder, const XML_Char* text, int length);
    static void XMLCALL Declaration(void* builder, const XML_Char* version, const XML_Char* encoding,
                                    int standalone);
    static void XMLCALL StartDoctype(void* builder, const XML_Char* name, const XML_Char* systemId,
                                     const XML_Char* publicId, int hasInternalSubset);

    template <typename Action> void Guarded(Action action);
    void InstallHandlers();
    bool ParseAll();
    void OpenElement(const char* name, const char** attributes);
    void CloseElement();
    void CheckDeclared(const char* encoding);
    std::size_t DeclaredByte() const;
    void RefuseDoctype();
    void Refuse(std::size_t byte, const std::string& reason);
    std::size_t CurrentByte() const;

    const std::shared_ptr<XMLSource> m_source;
    const std::string& m_text; // the source's
    const std::string m_recoded;
    const bool m_keepText;
    std::unique_ptr<std::remove_pointer<XML_Parser>::type, FreeParser> m_parser;
    std::vector<XMLNode> m_open; // the node above the top element and the elements begun but not ended
    std::string m_refusal;
    std::exception_ptr m_exception; // must not pass through Expat, which is C
};

} // namespace IO
} // namespace Core

#endif
