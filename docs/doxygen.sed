# What Doxygen 1.9.4 cannot take in a document. It keeps no anchors of Markdown, so that a link goes to the whole page.
s%\]\(([^):]*\.md)#[^)]*\)%](\1)%g
s%\[([^]]*)\]\(#[^)]*\)%\1%g
# What is no document is not there, but for pictures that are shown.
s%(^|[^!])\[([^]]*)\]\((\.\./)*(LICENSE|(bench|cmake|examples|fuzz|libs|tests|tools)(/[^)]*)?|[a-z-]*\.svg)\)%\1\2%g
# A '%' before a word is a mark of its own.
s/`%([A-Z])/`%%\1/g
