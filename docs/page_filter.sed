# Makes what pages name in backticks links: functions and other pages.
s/`((NamesManager|NamesReader|Host[A-Za-z]*)_[A-Z][A-Za-z]+)(\(\))?`/#\1/g
s/`docs\/([a-z_]+)\.md`/\\ref md_docs_\1 "docs\/\1.md"/g
s/`([A-Z]+)\.md`/\\ref md_\1 "\1.md"/g
