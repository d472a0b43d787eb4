# Writes FILES, which are those of the page, into the source OUTPUT.
set(types_html text/html\;charset=utf-8)
set(types_css text/css)
set(types_js text/javascript)
set(arrays "")
set(entries "")
set(number 0)
foreach(file IN LISTS FILES)
  get_filename_component(name ${file} NAME)
  get_filename_component(ending ${file} LAST_EXT)
  string(SUBSTRING ${ending} 1 -1 ending)
  file(READ ${file} bytes HEX)
  string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes "${bytes}")
  string(APPEND arrays "constexpr char kFile${number}[] = {${bytes}'\\0'};\n")
  string(APPEND entries
    "    {\"${name}\", \"${types_${ending}}\", {kFile${number}, sizeof kFile${number} - 1}},\n")
  math(EXPR number "${number} + 1")
endforeach()
file(WRITE ${OUTPUT} "#include \"server/PageFiles.h\"

namespace velmar::viewer {

namespace {

${arrays}
constexpr PageFile kFiles[] = {
${entries}};

}  // namespace

const PageFile* pageFile(const std::string& name) {
  for (const PageFile& file : kFiles) {
    if (name == file.name) return &file;
  }
  return nullptr;
}

}  // namespace velmar::viewer
")
