/// The forms in which the tool's command line is written down. Each is the text of one file.
#ifndef VELMAR_REFERENCE_FORMS_H
#define VELMAR_REFERENCE_FORMS_H

#include <CLI/CLI.hpp>
#include <string>

std::string manualPage(const CLI::App& app);
std::string bashCompletion(const CLI::App& program);
std::string zshCompletion(const CLI::App& program);
std::string fishCompletion(const CLI::App& program);

#endif
