# Writes a source file with the names and texts of the reference pages in turn.  Called with OUTPUT and PAGES (separated by |).
string(REPLACE "|" ";" PAGES "${PAGES}")
set(texts "")
foreach(page IN LISTS PAGES)
  file(READ "${page}" text)
  get_filename_component(name "${page}" NAME_WE)
  string(APPEND texts "    \"${name}\", R\"page(${text})page\",\n")
endforeach()
list(LENGTH PAGES count)
file(WRITE "${OUTPUT}" "extern const char* const kReferencePages[];
extern const int kReferencePageCount;
const char* const kReferencePages[] = {
${texts}};
const int kReferencePageCount = ${count};
")
