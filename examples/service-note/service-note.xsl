<?xml version="1.0" encoding="UTF-8"?>
<!-- Turns one topic into one page. It knows nothing of Ventrix: it copies text, and that is all that Ventrix asks of it. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <xsl:output method="xml" encoding="UTF-8" omit-xml-declaration="yes"/>

  <xsl:template match="/topic">
    <html lang="{@xml:lang}">
      <head>
        <meta charset="UTF-8"/>
        <title><xsl:value-of select="title"/></title>
        <style>body { font: 16px/1.5 sans-serif; max-width: 42em; margin: 2em auto }</style>
      </head>
      <body>
        <h1><xsl:apply-templates select="title/node()"/></h1>
        <xsl:apply-templates select="shortdesc | body"/>
      </body>
    </html>
  </xsl:template>

  <xsl:template match="shortdesc | p"><p><xsl:apply-templates/></p></xsl:template>
  <xsl:template match="body"><xsl:apply-templates/></xsl:template>
  <xsl:template match="section"><div class="section"><xsl:apply-templates/></div></xsl:template>
  <xsl:template match="section/title"><h2><xsl:apply-templates/></h2></xsl:template>
  <xsl:template match="ol | ul | li"><xsl:element name="{name()}"><xsl:apply-templates/></xsl:element></xsl:template>
  <xsl:template match="filepath | codeph"><code><xsl:apply-templates/></code></xsl:template>
  <xsl:template match="uicontrol"><b><xsl:apply-templates/></b></xsl:template>
</xsl:stylesheet>
