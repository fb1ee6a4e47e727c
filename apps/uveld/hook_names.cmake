# Names of the hook ids for people, in the order of the ids: made from the public header, so that they cannot differ.
file(STRINGS ${HEADER} lines REGEX "^    KIVO_HOOK_[A-Z0-9_]+ = [0-9]+")
set(names "")
foreach(line IN LISTS lines)
    string(REGEX REPLACE "^    KIVO_HOOK_([A-Z0-9_]+) = .*" "\\1" name "${line}")
    string(APPEND names "\"${name}\",\n")
endforeach()
file(WRITE ${OUTPUT} "${names}")
