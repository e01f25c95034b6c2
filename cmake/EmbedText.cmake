# cmake -D IN=FILE -D OUT=FILE.cpp -D NAME=IDENTIFIER -P EmbedText.cmake: a text file as a constant of namespace kvx.
file(READ ${IN} text)
file(WRITE ${OUT} "namespace kvx {\nextern const char ${NAME}[];\nconst char ${NAME}[] = R\"kvx(${text})kvx\";\n}  // namespace kvx\n")
