# Makes the exported stubs, the entry table, the linker's version script and the name list from the public headers.
#
# cmake -DHEADERS=a.h,b.h -DOUT=dir -DWIDTH=32|64 -DVARIANT=q7 -P EntryTable.cmake
#
# Slot k holds the address of the k-th implementation, names in descending order, filled by one relative relocation each
# when the library is loaded. A stub makes one indirect jump through its slot; in 32 bits, where an instruction cannot
# address memory from its own place, it asks for that place first: eax carries no argument.
string(REPLACE "," ";" HEADERS "${HEADERS}")
set(names)
foreach(header IN LISTS HEADERS)
  file(READ ${header} text)
  string(REGEX REPLACE "/\\*([^*]|\\*+[^*/])*\\*+/" "" text "${text}")
  string(REGEX MATCHALL "zebi[A-Za-z0-9_]+[ \n]*\\(|zebcv[A-Za-z0-9_]+[ \n]*\\(" found "${text}")
  foreach(name IN LISTS found)
    string(REGEX REPLACE "[ \n]*\\($" "" name "${name}")
    list(APPEND names ${name})
  endforeach()
endforeach()
list(LENGTH names total)
list(REMOVE_DUPLICATES names)
list(LENGTH names distinct)
if(NOT total EQUAL distinct)
  message(FATAL_ERROR "a function is declared twice in the public headers")
endif()
list(SORT names ORDER DESCENDING)

if(WIDTH EQUAL 64)
  set(jump "    jmp *.Ltable + @offset@(%rip)\n")
  set(own_place "")
  set(slot_bytes 8)
  set(slot .quad)
else()
  set(jump "    call .Lpc\n1:  jmp *(.Ltable + @offset@ - 1b)(%eax)\n")
  set(own_place "    .p2align 4\n.Lpc:\n    movl (%esp), %eax\n    ret\n")
  set(slot_bytes 4)
  set(slot .long)
endif()

set(stubs "")
set(slots "")
set(map "")
set(inc "")
set(k 0)
foreach(name IN LISTS names)
  math(EXPR offset "${slot_bytes} * ${k}")
  string(CONFIGURE "${jump}" body @ONLY)
  string(APPEND stubs "    .p2align 4\n    .globl ${name}\n    .type ${name}, @function\n${name}:\n${body}"
                      "    .size ${name}, . - ${name}\n")
  string(APPEND slots "    .hidden ${VARIANT}_${name}\n    ${slot} ${VARIANT}_${name}\n")
  string(APPEND map "    ${name};\n")
  string(APPEND inc "ENTRY(${name})\n")
  math(EXPR k "${k} + 1")
endforeach()

file(WRITE ${OUT}/entries.S
"    .section .text.entries, \"ax\", @progbits
${own_place}${stubs}
    .data
    .p2align 3
.Ltable:
${slots}
    .section .note.GNU-stack, \"\", @progbits
")
file(WRITE ${OUT}/zebcv.map "{\n  global:\n${map}  local: *;\n};\n")
file(WRITE ${OUT}/entries.inc "${inc}")
