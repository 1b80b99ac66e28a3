# Copies what the page uses out of node_modules. A strict Content-Security-Policy rules out an
# inline import map, so the one bare import among these files is made relative here.
file(MAKE_DIRECTORY ${VENDOR})
file(COPY_FILE ${MODULES}/preact/dist/preact.mjs ${VENDOR}/preact.js)
file(COPY_FILE ${MODULES}/htm/dist/htm.module.js ${VENDOR}/htm.js)

file(READ ${MODULES}/preact/hooks/dist/hooks.mjs hooks)
string(REPLACE "from\"preact\"" "from\"./preact.js\"" relative "${hooks}")
if(relative STREQUAL hooks)
  message(FATAL_ERROR "preact/hooks no longer imports \"preact\" in the known form")
endif()
file(WRITE ${VENDOR}/hooks.js "${relative}")

set(fonts ${MODULES}/@fontsource-variable/figtree/files)
file(COPY_FILE ${fonts}/figtree-latin-wght-normal.woff2 ${VENDOR}/figtree-latin.woff2)
file(COPY_FILE ${fonts}/figtree-latin-ext-wght-normal.woff2 ${VENDOR}/figtree-latin-ext.woff2)
