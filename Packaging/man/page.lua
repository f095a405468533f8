-- Turns a page of Docs into a manual page: a filter for pandoc, which gives `title` and `summary`.
--
-- The page's title becomes the section NAME, its introduction the section DESCRIPTION. Links to pages
-- that are manual pages, too, become references to those; other links leave their text.

local manual_pages = {
  ["vqmctl.md"] = { "vqmctl", "1" },
  ["VQMKeygrab.md"] = { "VQMKeygrab", "1" },
  ["schedule-format.md"] = { "vqm-schedule", "5" },
  ["constants-format.md"] = { "vqm-constants", "5" },
}

-- NAME and DESCRIPTION stand at the level that the page's own sections are raised to.
local function raise_header(header)
  if header.level == 1 then
    return header
  elseif header.level == 2 then
    return pandoc.Header(1, pandoc.Str(pandoc.text.upper(pandoc.utils.stringify(header))))
  end
  return pandoc.Header(header.level - 1, header.content)
end

local function refer(link)
  local page = manual_pages[link.target:match("[^/]+$") or ""]
  if not page then
    return link.content
  end
  return { pandoc.Strong(pandoc.Str(page[1])), pandoc.Str("(" .. page[2] .. ")") }
end

-- A terminal has no room for tables. The first column becomes the term, the last one its explanation;
-- a column between them keeps its heading.
local function list_rows(tab)
  local headings = tab.head.rows[1].cells
  local items = pandoc.List()
  for _, row in ipairs(tab.bodies[1].body) do
    local explanation = pandoc.List()
    for i = 2, #row.cells do
      local content = pandoc.utils.blocks_to_inlines(row.cells[i].contents)
      if i < #row.cells then
        content:insert(1, pandoc.Str(pandoc.utils.stringify(headings[i].contents) .. ": "))
      end
      explanation:insert(pandoc.Para(content))
    end
    items:insert({ pandoc.utils.blocks_to_inlines(row.cells[1].contents), { explanation } })
  end
  return pandoc.DefinitionList(items)
end

function Pandoc(document)
  local name = pandoc.utils.stringify(document.meta.title)
  local summary = pandoc.utils.stringify(document.meta.summary)
  local blocks = pandoc.List({
    pandoc.Header(1, pandoc.Str("NAME")),
    pandoc.Para({ pandoc.Str(name .. " - " .. summary) }),
  })
  local first = true
  for _, block in ipairs(document.blocks) do
    if block.t ~= "Header" and first then
      blocks:insert(pandoc.Header(1, pandoc.Str("DESCRIPTION")))
    end
    if block.t ~= "Header" or block.level > 1 then
      blocks:insert(block)
      first = false
    end
  end
  document.blocks = blocks
  return document:walk({ Header = raise_header, Link = refer, Table = list_rows })
end
