<?xml version="1.0" encoding="UTF-8"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <xsl:output method="xml" encoding="UTF-8" omit-xml-declaration="yes"/>
  <xsl:template match="/topic">
    <html><body><xsl:apply-templates select="body/p"/></body></html>
  </xsl:template>
  <xsl:template match="p"><p><xsl:apply-templates/></p></xsl:template>
</xsl:stylesheet>
