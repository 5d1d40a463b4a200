# Writes a header as clients get it: FROM, TO. What it includes of ours stands below the folder `vellobar` there.
file(READ ${FROM} text)
string(REGEX REPLACE "#include \"([a-z]+/[a-z_0-9]+\\.h)\"" "#include \"vellobar/\\1\"" text "${text}")
string(REPLACE "\"vellobar/api/" "\"vellobar/" text "${text}")
file(WRITE ${TO} "${text}")
