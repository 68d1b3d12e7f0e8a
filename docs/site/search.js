// Searches the pages' sections while the user types. The index is built from search-index.js at the first
// key, so that pages open at once; no request is made, so it works from a folder, too.
(() => {
  const query = document.getElementById("query");
  const results = document.getElementById("results");
  const mostResults = 12;
  const contextLength = 110;
  let index = null;

  const buildIndex = () => lunr(function () {
    this.ref("number");
    this.field("title", { boost: 10 });
    this.field("text");
    // Names such as UsbFlashRead and --flash-size are found as they are written.
    this.tokenizer.separator = /[\s()[\],;:"']+/;
    this.pipeline.remove(lunr.stemmer);
    this.searchPipeline.remove(lunr.stemmer);
    searchEntries.forEach((entry, number) => this.add({ number, title: entry.title, text: entry.text }));
  });

  const find = (words) => index.query((search) => {
    words.forEach((word) => {
      search.term(word, { boost: 10 });
      search.term(word, { wildcard: lunr.Query.wildcard.LEADING | lunr.Query.wildcard.TRAILING });
    });
  });

  const context = (text, words) => {
    const lower = text.toLowerCase();
    const place = Math.max(0, Math.min(...words.map((word) => {
      const found = lower.indexOf(word);
      return found < 0 ? text.length : found;
    })) - 30);
    return (place > 0 ? "… " : "") + text.slice(place, place + contextLength);
  };

  const show = () => {
    const words = query.value.toLowerCase().split(/\s+/).filter((word) => word.length > 1);
    results.replaceChildren();
    results.hidden = words.length === 0;
    if (results.hidden) {
      return;
    }
    index = index || buildIndex();
    const found = find(words).slice(0, mostResults);
    found.forEach((match) => {
      const entry = searchEntries[match.ref];
      const link = document.createElement("a");
      link.href = entry.file;
      const title = document.createElement("strong");
      title.textContent = entry.title === entry.page ? entry.page : `${entry.page}: ${entry.title}`;
      const text = document.createElement("span");
      text.textContent = context(entry.text, words);
      link.append(title, text);
      const item = document.createElement("li");
      item.append(link);
      results.append(item);
    });
    if (found.length === 0) {
      const item = document.createElement("li");
      item.textContent = "Nothing found";
      results.append(item);
    }
  };

  query.addEventListener("input", show);
  query.addEventListener("keydown", (event) => {
    if (event.key === "Escape") {
      query.value = "";
      show();
    } else if (event.key === "Enter") {
      results.querySelector("a")?.click();
    }
  });
  results.addEventListener("click", () => { query.value = ""; results.hidden = true; });
})();
