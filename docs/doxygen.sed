# What Doxygen 1.9.4 cannot take in a document. It keeps no anchors of Markdown, so that a link goes to the whole page.
s%\]\(([^):]*\.md)#[^)]*\)%](\1)%g
s%\[([^]]*)\]\(#[^)]*\)%\1%g
# What is no document is not there.
s%\[([^]]*)\]\((\.\./)*(LICENSE|(bench|cmake|examples|fuzz|libs|tests|tools)/[^)]*)\)%\1%g
# A '%' before a word is a mark of its own.
s/`%([A-Z])/`%%\1/g
