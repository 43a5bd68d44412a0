# Shows Doxygen a header by families: the headings between rules become groups, and a comment stands for all declarations
# that follow it without an empty line.
function close_group() {
  if (group) print "/** @} */"
  group = ""
}
BEGIN { language = ARGV[1] ~ /hpp$/ ? "cpp" : "c" }
/^\/\* -+ \*\/$/ {
  getline
  close_group()
  title = substr($0, 4, length($0) - 6)
  group = language "_" tolower(title)
  gsub(/[^a-z]+/, "_", group)
  printf "/** @defgroup %s %s\n * @ingroup %s\n * @{ */\n", group, title, language
  comment = ""
  next
}
/^(#ifdef __cplusplus|}  \/\/ namespace prismoutl)/ { close_group() }
/^\/\*\*/ { comment = ""; inside = 1 }
/^$/ { comment = "" }
/^PRISMO_API/ && comment && !fresh { printf "%s", comment }
inside { comment = comment $0 "\n" }
{ fresh = inside }
/\*\/$/ { inside = 0 }
/^template <>$/ { exit }  # Doxygen finds no scope for a specialisation of std, and it is the last
{ print }
