# Makes a script of what a document shows: every block of sh, in order; a comment "file: NAME" makes a file of the block
# behind it; the lines of a comment "test", which readers do not see, prepare and check. A block with a line of ./dev or
# sudo is left out; with -v tasks=COMMAND it stays, and COMMAND gets each such line.
function end_of_block() {
  if (inside == "file") { print "END_OF_BLOCK"; file = "" }
  if (inside != "sh") return
  if (has_task && !tasks) print "echo left out: a block with tasks"
  else { printf "%s", block; ++ran }
}
/^<!-- test$/ { hidden = 1; next }
/^-->$/ { hidden = 0; next }
/^<!-- file: .* -->$/ { file = $3; next }
/^```/ && inside { end_of_block(); inside = ""; next }
/^```/ && file { print "cat >" file " <<\"END_OF_BLOCK\""; inside = "file"; next }
/^```/ { inside = $0 == "```sh" ? "sh" : "other"; block = ""; has_task = 0; next }
hidden || inside == "file" { print; next }
inside == "sh" {
  is_task = /^(\.\/dev|sudo) /
  has_task = has_task || is_task
  block = block (is_task ? tasks " <<\"END_OF_LINE\"\n" $0 "\nEND_OF_LINE" : $0) "\n"
}
END { print "echo ran " ran + 0 " blocks" }
