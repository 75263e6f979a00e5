<?xml version="1.0" encoding="UTF-8"?>
<!-- Outputs the document unchanged, with "$qldtdpath$" as the system id in its DOCTYPE; the caller then replaces this with
     the path of the DTD. XSLT gives access neither to the DOCTYPE nor to undeclared entities, so the content of the file
     is copied, by an extension element of the desk host. -->
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
