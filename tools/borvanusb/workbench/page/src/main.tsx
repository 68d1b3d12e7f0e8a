document;
