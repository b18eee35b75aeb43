// Documents and annotations as JSON, in the form of docs/web-protocol.md.
#pragma once

#include "actions/OpenDocuments.h"
#include "services/PanelElements.h"
#include "web/HttpServer.h"

#include <nlohmann/json_fwd.hpp>

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace Workbench {

// Warnings about a file for clients: without the file's path in front, limited in length and
// number.
std::vector<std::string> ShortWarnings(const std::vector<std::string>& warnings,
                                       const std::string& name);

// DOCUMENT of the protocol, without a current comment. `busy` is "saving", "listing" or null,
// `recovery` the copy that it can be restored from. [ui-thread]
nlohmann::ordered_json DescribeDocument(const OpenDocument& document, const char* busy,
                                        const std::optional<std::filesystem::path>& recovery);

// ROW of the protocol: the place of an element in a list; null outside the lists. [ui-thread]
nlohmann::ordered_json DescribeRow(const HtmlEngine::Document& panel,
                                   HtmlEngine::ElementHandle element);

// ANNOTATION of the protocol; null for an empty reference. [any-thread]
nlohmann::ordered_json DescribeAnnotation(const Documents::AnnotationRef& annotation,
                                          std::size_t index);

// JSON as text; bytes that are not valid UTF-8 (in file names) become U+FFFD. [any-thread]
std::string ToText(const nlohmann::ordered_json& json);

HttpAnswer JsonAnswer(unsigned status, const nlohmann::ordered_json& json);

}  // namespace Workbench
