# cmake -DOUT=file.cpp "-DSCRIPTS=a.sql;b.sql" -P EmbedScripts.cmake: a source file that defines the table that
# sandbox/chain/scripts.h declares, one row a script.
set(rows "")
set(count 0)
foreach(script ${SCRIPTS})
    file(READ ${script} text)
    get_filename_component(name ${script} NAME_WE)
    string(APPEND rows "    {\"${name}\", R\"sql~(${text})sql~\"},\n")
    math(EXPR count "${count} + 1")
endforeach()
file(WRITE ${OUT} "#include \"sandbox/chain/scripts.h\"\n\nnamespace sandbox::chain {\n\nnamespace {\nconstexpr EmbeddedScript kScripts[] = {\n${rows}};\n}\n\nstd::span<const EmbeddedScript> embeddedScripts() { return kScripts; }\n\n}  // namespace sandbox::chain\n")
