# Writes a source file with the reference pages as texts.  Called with OUTPUT and PAGES (separated by |).
string(REPLACE "|" ";" PAGES "${PAGES}")
set(texts "")
foreach(page IN LISTS PAGES)
  file(READ "${page}" text)
  string(APPEND texts "    R\"page(${text})page\",\n")
endforeach()
list(LENGTH PAGES count)
file(WRITE "${OUTPUT}" "extern const char* const kReferencePages[];
extern const int kReferencePageCount;
const char* const kReferencePages[] = {
${texts}};
const int kReferencePageCount = ${count};
")
