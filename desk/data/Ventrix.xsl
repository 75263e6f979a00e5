<?xml version="1.0" encoding="UTF-8"?>
<!-- Writes the document out as it is, with "$qldtdpath$" where its DOCTYPE names the DTD's system id; whoever asked for
     the run puts the DTD's path there. XSLT sees neither a DOCTYPE nor an entity that nobody declares, so the document's
     own text is copied, by an element that the desk host gives to stylesheets. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform"
                xmlns:host="urn:ventrix:desk-host" extension-element-prefixes="host">
  <xsl:output method="text"/>

  <xsl:template match="/">
    <host:copy-document system-id="$qldtdpath$">
      <xsl:fallback>
        <xsl:message terminate="yes">This stylesheet runs in the desk host only.</xsl:message>
      </xsl:fallback>
    </host:copy-document>
  </xsl:template>
</xsl:stylesheet>
