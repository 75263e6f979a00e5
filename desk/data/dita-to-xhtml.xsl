<?xml version="1.0" encoding="UTF-8"?>
<!-- Transforms one DITA document into one page: a topic, a document with several topics, or the table of contents of a map
     (element "contents"). The element "page-frame" in it describes what the page has around this content, which is in
     "main". The desk host has renamed specialised elements to their base types, resolved conditions,
     content references, keys and link targets, and numbered figures, tables and footnotes.
     Each source element becomes one element of the page if possible, with its types as class names. Text is copied
     unchanged. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform" xmlns="http://www.w3.org/1999/xhtml">
  <!-- The desk host writes this as HTML that is well-formed XML. -->
  <xsl:output method="html" encoding="UTF-8"/>

  <!-- The map's language, for topics without a language. -->
  <xsl:param name="language"/>

  <xsl:variable name="page-language">
    <xsl:choose>
      <xsl:when test="/*/@xml:lang"><xsl:value-of select="/*/@xml:lang"/></xsl:when>
      <xsl:when test="/*/@language != ''"><xsl:value-of select="/*/@language"/></xsl:when>
      <xsl:when test="$language != ''"><xsl:value-of select="$language"/></xsl:when>
      <xsl:otherwise>en</xsl:otherwise>
    </xsl:choose>
  </xsl:variable>

  <!-- ===== Pages ===== -->

  <xsl:variable name="frame" select="/*/page-frame"/>

  <xsl:template match="/">
    <html lang="{$page-language}" xml:lang="{$page-language}">
      <head>
        <meta name="viewport" content="width=device-width, initial-scale=1"/>
        <title>
          <xsl:value-of select="$frame/@window-title"/>
          <xsl:if test="$frame/@window-title != $frame/@site"><xsl:value-of select="concat(' - ', $frame/@site)"/></xsl:if>
        </title>
        <xsl:if test="$frame/@description"><meta name="description" content="{$frame/@description}"/></xsl:if>
        <xsl:for-each select="$frame/meta"><meta name="{@name}" content="{@content}"/></xsl:for-each>
        <xsl:for-each select="$frame/style"><link rel="stylesheet" href="{@href}"/></xsl:for-each>
        <xsl:for-each select="$frame/script"><script src="{@href}" defer="defer"></script></xsl:for-each>
      </head>
      <body>
        <xsl:if test="not($frame/item)"><xsl:attribute name="class">ventrix-single</xsl:attribute></xsl:if>
        <xsl:call-template name="page-head"/>
        <xsl:if test="$frame/item">
          <xsl:call-template name="page-contents"/>
          <xsl:call-template name="breadcrumb"/>
        </xsl:if>
        <main id="ventrix-main"><xsl:apply-templates select="*" mode="page"/></main>
        <xsl:if test="$frame/previous | $frame/next"><xsl:call-template name="previous-and-next"/></xsl:if>
      </body>
    </html>
  </xsl:template>

  <xsl:template name="page-head">
    <a class="ventrix-skip" href="#ventrix-main">
      <xsl:call-template name="word"><xsl:with-param name="key" select="'skip'"/></xsl:call-template>
    </a>
    <header class="ventrix-head">
      <a class="ventrix-home" href="{$frame/@home}">
        <xsl:if test="$frame/@start"><xsl:attribute name="aria-current">page</xsl:attribute></xsl:if>
        <xsl:if test="$frame/@logo"><img src="{$frame/@logo}" alt=""/></xsl:if>
        <span><xsl:value-of select="$frame/@site"/></span>
      </a>
      <xsl:if test="$frame/item">
        <a class="ventrix-jump" href="#ventrix-contents">
          <xsl:call-template name="word"><xsl:with-param name="key" select="'contents'"/></xsl:call-template>
        </a>
      </xsl:if>
    </header>
    <xsl:text>&#10;</xsl:text>
  </xsl:template>

  <xsl:template name="page-contents">
    <nav class="ventrix-contents" id="ventrix-contents">
      <xsl:attribute name="aria-label">
        <xsl:call-template name="word"><xsl:with-param name="key" select="'contents'"/></xsl:call-template>
      </xsl:attribute>
      <ul><xsl:apply-templates select="$frame/item | $frame/more"/></ul>
    </nav>
    <xsl:text>&#10;</xsl:text>
  </xsl:template>

  <xsl:template name="breadcrumb">
    <nav class="ventrix-breadcrumb">
      <xsl:attribute name="aria-label">
        <xsl:call-template name="word"><xsl:with-param name="key" select="'place'"/></xsl:call-template>
      </xsl:attribute>
      <ol>
        <li>
          <a href="{$frame/@home}"><xsl:call-template name="word"><xsl:with-param name="key" select="'home'"/></xsl:call-template></a>
        </li>
        <xsl:for-each select="$frame/crumb"><li><xsl:call-template name="item-label"/></li></xsl:for-each>
        <li aria-current="page"><xsl:value-of select="$frame/@title"/></li>
      </ol>
    </nav>
    <xsl:text>&#10;</xsl:text>
  </xsl:template>

  <xsl:template name="previous-and-next">
    <nav class="ventrix-pager">
      <xsl:attribute name="aria-label">
        <xsl:call-template name="word"><xsl:with-param name="key" select="'pager'"/></xsl:call-template>
      </xsl:attribute>
      <xsl:for-each select="$frame/previous | $frame/next">
        <a class="ventrix-{name()}" href="{@href}" rel="{substring('prevnext', 1 + 4 * boolean(self::next), 4)}">
          <span><xsl:call-template name="word"><xsl:with-param name="key" select="concat(name(), '-page')"/></xsl:call-template></span>
          <xsl:text> </xsl:text>
          <xsl:value-of select="@title"/>
        </a>
      </xsl:for-each>
    </nav>
  </xsl:template>

  <!-- The start page of a map. -->
  <xsl:template match="contents" mode="page">
    <h1 class="title"><xsl:value-of select="@title"/></h1>
    <ul class="contents"><xsl:apply-templates select="item"/></ul>
  </xsl:template>

  <xsl:template match="item">
    <li>
      <xsl:if test="@closed"><xsl:attribute name="class">ventrix-closed</xsl:attribute></xsl:if>
      <xsl:call-template name="item-label"/>
      <xsl:if test="item"><ul><xsl:apply-templates select="item | more"/></ul></xsl:if>
    </li>
    <xsl:text>&#10;</xsl:text>
  </xsl:template>
  <xsl:template name="item-label">
    <xsl:choose>
      <xsl:when test="@href">
        <a href="{@href}">
          <xsl:if test="@current"><xsl:attribute name="aria-current"><xsl:value-of select="@current"/></xsl:attribute></xsl:if>
          <xsl:value-of select="@title"/>
        </a>
      </xsl:when>
      <xsl:otherwise><span class="heading"><xsl:value-of select="@title"/></span></xsl:otherwise>
    </xsl:choose>
  </xsl:template>
  <!-- Entries that a large table of contents leaves out here. -->
  <xsl:template match="more">
    <li class="ventrix-more">
      <a href="{$frame/@home}"><xsl:call-template name="word"><xsl:with-param name="key" select="'all'"/></xsl:call-template></a>
    </li>
  </xsl:template>

  <xsl:template match="*" mode="page"><xsl:apply-templates select="."/></xsl:template>
  <xsl:template match="dita" mode="page"><xsl:apply-templates select="*"/></xsl:template>
  <xsl:template match="page-frame" priority="3"/>

  <!-- ===== Attributes of all elements ===== -->

  <!-- Class names: the types from the base type to the element's own, then its outputclass. -->
  <xsl:template name="common">
    <xsl:param name="before"/>
    <xsl:param name="after"/>
    <xsl:attribute name="class">
      <xsl:value-of select="normalize-space(concat($before, ' ', @page-types, ' ', $after, ' ', @outputclass))"/>
    </xsl:attribute>
    <xsl:if test="@id">
      <xsl:attribute name="id"><xsl:call-template name="anchor"/></xsl:attribute>
    </xsl:if>
    <xsl:if test="@xml:lang">
      <xsl:attribute name="lang"><xsl:value-of select="@xml:lang"/></xsl:attribute>
      <xsl:attribute name="xml:lang"><xsl:value-of select="@xml:lang"/></xsl:attribute>
    </xsl:if>
    <xsl:if test="@dir"><xsl:attribute name="dir"><xsl:value-of select="@dir"/></xsl:attribute></xsl:if>
  </xsl:template>

  <xsl:template name="anchor">
    <xsl:if test="not(self::topic)">
      <xsl:value-of select="concat(ancestor::topic[1]/@id, '__')"/>
    </xsl:if>
    <xsl:value-of select="@id"/>
  </xsl:template>

  <!-- An element of unknown type becomes a block. -->
  <xsl:template match="*">
    <div><xsl:call-template name="common"/><xsl:apply-templates/></div>
  </xsl:template>

  <xsl:template name="block">
    <xsl:param name="name" select="'div'"/>
    <xsl:element name="{$name}"><xsl:call-template name="common"/><xsl:apply-templates/></xsl:element>
    <xsl:text>&#10;</xsl:text>
  </xsl:template>

  <!-- A phrase whose key has a target is a link. -->
  <xsl:template name="inline">
    <xsl:param name="name" select="'span'"/>
    <xsl:element name="{$name}">
      <xsl:call-template name="common"/>
      <xsl:choose>
        <xsl:when test="@keyref and @href and not(self::xref or ancestor::xref)">
          <a href="{@href}"><xsl:call-template name="link-content"/></a>
        </xsl:when>
        <xsl:otherwise><xsl:apply-templates/></xsl:otherwise>
      </xsl:choose>
    </xsl:element>
  </xsl:template>

  <!-- ===== Topics ===== -->

  <xsl:template match="topic">
    <div>
      <xsl:call-template name="common"/>
      <xsl:apply-templates select="title"/>
      <xsl:if test="not(body)">
        <xsl:apply-templates select="*[self::shortdesc or self::abstract]"/>
      </xsl:if>
      <xsl:apply-templates select="body"/>
      <xsl:apply-templates select="related-links"/>
      <xsl:call-template name="footnotes"/>
      <xsl:apply-templates select="topic"/>
    </div>
  </xsl:template>

  <xsl:template match="topic/title" priority="2">
    <xsl:variable name="depth" select="count(ancestor::topic)"/>
    <xsl:element name="h{$depth * ($depth &lt; 7) + 6 * ($depth &gt; 6)}">
      <xsl:call-template name="common"><xsl:with-param name="after" select="concat('topictitle', $depth)"/></xsl:call-template>
      <xsl:apply-templates/>
    </xsl:element>
    <xsl:text>&#10;</xsl:text>
  </xsl:template>

  <xsl:template match="body">
    <div>
      <xsl:call-template name="common"/>
      <xsl:apply-templates select="../*[self::shortdesc or self::abstract]"/>
      <xsl:apply-templates/>
    </div>
    <xsl:text>&#10;</xsl:text>
  </xsl:template>

  <xsl:template match="shortdesc">
    <xsl:call-template name="block"><xsl:with-param name="name" select="'p'"/></xsl:call-template>
  </xsl:template>
  <xsl:template match="abstract//shortdesc" priority="2">
    <xsl:call-template name="block"/>
  </xsl:template>

  <xsl:template match="prolog | titlealts | indexterm | index-base | data | data-about | draft-comment |
                       required-cleanup | no-topic-nesting | unknown | alt | longdescref | param | colspec" priority="3"/>
  <xsl:template match="foreign"><xsl:copy-of select="node()[not(self::xref)]"/></xsl:template>

  <!-- ===== Blocks ===== -->

  <!-- XHTML does not allow a block in a p, so that a paragraph with one becomes a div. -->
  <xsl:template match="p">
    <xsl:variable name="blocks" select="descendant::*[self::pre or self::ul or self::sl or self::ol or self::lq or self::dl or
                                        self::note or self::lines or self::fig or self::table or self::simpletable]"/>
    <xsl:call-template name="block">
      <xsl:with-param name="name" select="substring('pdiv', 1 + boolean($blocks), 1 + 2 * boolean($blocks))"/>
    </xsl:call-template>
  </xsl:template>

  <xsl:template match="section | example | bodydiv | sectiondiv | figgroup | div">
    <xsl:call-template name="block"/>
  </xsl:template>
  <xsl:template match="section/title | example/title">
    <xsl:variable name="level" select="1 + count(ancestor::topic)"/>
    <xsl:element name="h{$level * ($level &lt; 7) + 6 * ($level &gt; 6)}">
      <xsl:call-template name="common"><xsl:with-param name="after" select="'sectiontitle'"/></xsl:call-template>
      <xsl:apply-templates/>
    </xsl:element>
  </xsl:template>

  <xsl:template match="topic/title[not(*) and normalize-space() = ''] | section/title[not(*) and normalize-space() = ''] |
                       example/title[not(*) and normalize-space() = '']" priority="3"/>

  <xsl:template match="note">
    <xsl:variable name="type">
      <xsl:choose>
        <xsl:when test="@type = 'other' and @othertype"><xsl:value-of select="@othertype"/></xsl:when>
        <xsl:when test="@type and @type != 'other'"><xsl:value-of select="@type"/></xsl:when>
        <xsl:otherwise>note</xsl:otherwise>
      </xsl:choose>
    </xsl:variable>
    <div>
      <xsl:call-template name="common">
        <xsl:with-param name="after"><xsl:if test="$type != 'note'"><xsl:value-of select="$type"/></xsl:if></xsl:with-param>
      </xsl:call-template>
      <span class="notetitle">
        <xsl:call-template name="word"><xsl:with-param name="key" select="$type"/></xsl:call-template>
        <xsl:text>:</xsl:text>
      </span>
      <xsl:text> </xsl:text>
      <xsl:apply-templates/>
    </div>
    <xsl:text>&#10;</xsl:text>
  </xsl:template>

  <!-- Long lines are scrolled, with the keyboard too. -->
  <xsl:template match="pre">
    <pre tabindex="0"><xsl:call-template name="common"/><xsl:apply-templates/></pre>
    <xsl:text>&#10;</xsl:text>
  </xsl:template>
  <xsl:template match="lines"><xsl:call-template name="block"/></xsl:template>

  <xsl:template match="lq">
    <blockquote>
      <xsl:call-template name="common"/>
      <xsl:apply-templates/>
      <xsl:if test="@reftitle"><div class="source"><cite><xsl:value-of select="@reftitle"/></cite></div></xsl:if>
    </blockquote>
    <xsl:text>&#10;</xsl:text>
  </xsl:template>

  <!-- ===== Lists ===== -->

  <xsl:template match="ul | sl">
    <xsl:call-template name="block"><xsl:with-param name="name" select="'ul'"/></xsl:call-template>
  </xsl:template>
  <xsl:template match="ol">
    <ol>
      <xsl:call-template name="common"/>
      <xsl:variable name="depth" select="count(ancestor::ol) mod 3"/>
      <xsl:if test="$depth &gt; 0">
        <xsl:attribute name="type"><xsl:value-of select="substring('1ai', 1 + $depth, 1)"/></xsl:attribute>
      </xsl:if>
      <xsl:apply-templates/>
    </ol>
    <xsl:text>&#10;</xsl:text>
  </xsl:template>
  <xsl:template match="li | sli">
    <xsl:call-template name="block"><xsl:with-param name="name" select="'li'"/></xsl:call-template>
  </xsl:template>
  <xsl:template match="li[contains(@class, ' task/stepsection ')]" priority="2">
    <li>
      <xsl:call-template name="common"/>
      <xsl:apply-templates/>
    </li>
    <xsl:text>&#10;</xsl:text>
  </xsl:template>
  <!-- A stepsection among the steps is not counted. -->
  <xsl:template match="ol[li[contains(@class, ' task/stepsection ')]]/li[contains(@class, ' task/step ')]" priority="2">
    <li value="{1 + count(preceding-sibling::li[contains(@class, ' task/step ')])}">
      <xsl:call-template name="common"/>
      <xsl:apply-templates/>
    </li>
    <xsl:text>&#10;</xsl:text>
  </xsl:template>
  <!-- A single step is not numbered. -->
  <xsl:template match="ol[contains(@class, ' task/steps ')][count(*[contains(@class, ' task/step ')]) = 1] |
                       ul[contains(@class, ' task/steps-unordered ')][count(*[contains(@class, ' task/step ')]) = 1]" priority="2">
    <div>
      <xsl:call-template name="common"/>
      <xsl:for-each select="*[contains(@class, ' task/step ') or contains(@class, ' task/stepsection ')]">
        <xsl:call-template name="block"/>
      </xsl:for-each>
    </div>
  </xsl:template>
  <xsl:template match="itemgroup"><xsl:call-template name="block"/></xsl:template>

  <xsl:template match="dl">
    <xsl:call-template name="block"><xsl:with-param name="name" select="'dl'"/></xsl:call-template>
  </xsl:template>
  <xsl:template match="dlentry | dlhead"><xsl:apply-templates/></xsl:template>
  <!-- An entry has no element of its own in a page; its id goes to its first term. -->
  <xsl:template match="dt | dthd">
    <dt>
      <xsl:call-template name="common"/>
      <xsl:if test="../@id and not(preceding-sibling::*)">
        <xsl:choose>
          <xsl:when test="@id"><a id="{ancestor::topic[1]/@id}__{../@id}"></a></xsl:when>
          <xsl:otherwise>
            <xsl:attribute name="id"><xsl:value-of select="concat(ancestor::topic[1]/@id, '__', ../@id)"/></xsl:attribute>
          </xsl:otherwise>
        </xsl:choose>
      </xsl:if>
      <xsl:apply-templates/>
    </dt>
    <xsl:text>&#10;</xsl:text>
  </xsl:template>
  <xsl:template match="dd | ddhd">
    <xsl:call-template name="block"><xsl:with-param name="name" select="'dd'"/></xsl:call-template>
  </xsl:template>

  <!-- ===== Figures and images ===== -->

  <xsl:template match="fig"><xsl:call-template name="block"/></xsl:template>
  <xsl:template match="fig/title">
    <span class="title figcap">
      <span class="number">
        <xsl:call-template name="word"><xsl:with-param name="key" select="'figure'"/></xsl:call-template>
        <xsl:text> </xsl:text>
        <xsl:value-of select="../@page-number"/>
        <xsl:text>. </xsl:text>
      </span>
      <span><xsl:apply-templates/></span>
    </span>
  </xsl:template>

  <!-- The parts of a syntax diagram: alternatives in braces, optional parts in brackets, the default underlined. -->
  <xsl:template match="fig[contains(@class, ' pr-d/syntaxdiagram ')] | figgroup[contains(@class, ' pr-d/')]" priority="2">
    <xsl:variable name="optional" select="@importance = 'optional'"/>
    <xsl:variable name="choice" select="contains(@class, ' pr-d/groupchoice ')"/>
    <div>
      <xsl:call-template name="common"/>
      <xsl:if test="$optional">[ </xsl:if>
      <xsl:if test="$choice">{ </xsl:if>
      <xsl:for-each select="node()">
        <xsl:if test="$choice and self::* and not(self::title) and preceding-sibling::*[not(self::title)]"> | </xsl:if>
        <xsl:call-template name="syntax-part"/>
      </xsl:for-each>
      <xsl:if test="$choice"> }</xsl:if>
      <xsl:if test="$optional"> ]</xsl:if>
    </div>
    <xsl:text>&#10;</xsl:text>
  </xsl:template>
  <xsl:template name="syntax-part">
    <xsl:choose>
      <xsl:when test="@importance = 'optional' and not(self::figgroup)">[ <xsl:apply-templates select="."/> ]</xsl:when>
      <xsl:when test="@importance = 'default' and not(self::figgroup)"><u><xsl:apply-templates select="."/></u></xsl:when>
      <xsl:otherwise><xsl:apply-templates select="."/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <xsl:template name="map-name">
    <xsl:text>imagemap</xsl:text>
    <xsl:number level="any" count="fig[contains(@class, ' ut-d/imagemap ')]"/>
  </xsl:template>
  <!-- An image map: shapes on the image that lead to targets. -->
  <xsl:template match="fig[contains(@class, ' ut-d/imagemap ')]" priority="2">
    <div>
      <xsl:call-template name="common"/>
      <xsl:apply-templates select="title"/>
      <xsl:apply-templates select="image"/>
      <xsl:variable name="map"><xsl:call-template name="map-name"/></xsl:variable>
      <map name="{$map}" id="{$map}">
        <xsl:for-each select="*[contains(@class, ' ut-d/area ')]">
          <area shape="{normalize-space(*[contains(@class, ' ut-d/shape ')])}"
                coords="{normalize-space(*[contains(@class, ' ut-d/coords ')])}">
            <xsl:if test="xref/@href"><xsl:attribute name="href"><xsl:value-of select="xref/@href"/></xsl:attribute></xsl:if>
            <xsl:variable name="text">
              <xsl:call-template name="attribute-text">
                <xsl:with-param name="text">
                  <xsl:variable name="own"><xsl:copy-of select="xref/node()[not(self::desc)]"/></xsl:variable>
                  <xsl:value-of select="normalize-space($own)"/>
                  <xsl:if test="normalize-space($own) = ''"><xsl:for-each select="xref"><xsl:call-template name="link-text"/></xsl:for-each></xsl:if>
                </xsl:with-param>
              </xsl:call-template>
            </xsl:variable>
            <xsl:attribute name="alt"><xsl:value-of select="$text"/></xsl:attribute>
            <xsl:attribute name="title"><xsl:value-of select="$text"/></xsl:attribute>
          </area>
        </xsl:for-each>
      </map>
    </div>
    <xsl:text>&#10;</xsl:text>
  </xsl:template>

  <!-- An image is inline unless its placement asks for a line of its own. -->
  <xsl:template match="image">
    <xsl:choose>
      <xsl:when test="@placement = 'break' and (@align = 'left' or @align = 'right' or @align = 'center')">
        <span class="imageblock image{@align}"><xsl:call-template name="image"/></span>
      </xsl:when>
      <xsl:when test="@placement = 'break'"><span class="imageblock"><xsl:call-template name="image"/></span></xsl:when>
      <xsl:otherwise><xsl:call-template name="image"/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>
  <xsl:template name="image">
    <img src="{@href}">
      <xsl:attribute name="alt">
        <xsl:call-template name="attribute-text">
          <xsl:with-param name="text">
            <xsl:choose>
              <xsl:when test="alt"><xsl:value-of select="alt"/></xsl:when>
              <xsl:otherwise><xsl:value-of select="@alt"/></xsl:otherwise>
            </xsl:choose>
          </xsl:with-param>
        </xsl:call-template>
      </xsl:attribute>
      <xsl:call-template name="common"/>
      <xsl:if test="parent::fig[contains(@class, ' ut-d/imagemap ')]">
        <xsl:attribute name="usemap">
          <xsl:text>#</xsl:text>
          <xsl:for-each select=".."><xsl:call-template name="map-name"/></xsl:for-each>
        </xsl:attribute>
      </xsl:if>
      <xsl:call-template name="image-size"/>
    </img>
  </xsl:template>
  <!-- HTML's attributes are numbers of pixels; other lengths are CSS. -->
  <xsl:template name="image-size">
    <xsl:copy-of select="@*[(name() = 'width' or name() = 'height') and number(.) = number(.)]"/>
    <xsl:variable name="lengths" select="@*[(name() = 'width' or name() = 'height') and number(.) != number(.)]"/>
    <xsl:if test="$lengths">
      <xsl:attribute name="style">
        <xsl:for-each select="$lengths"><xsl:value-of select="concat(name(), ': ', ., '; ')"/></xsl:for-each>
      </xsl:attribute>
    </xsl:if>
  </xsl:template>

  <!-- Marker text is decoded in text nodes only, so that it must not get into an attribute. -->
  <xsl:template name="attribute-text">
    <xsl:param name="text"/>
    <xsl:choose>
      <xsl:when test="contains($text, 'QL_START') and contains(substring-after($text, 'QL_START'), 'QL_END')">
        <xsl:value-of select="substring-before($text, 'QL_START')"/>
        <xsl:call-template name="attribute-text">
          <xsl:with-param name="text" select="substring-after(substring-after($text, 'QL_START'), 'QL_END')"/>
        </xsl:call-template>
      </xsl:when>
      <xsl:when test="contains($text, 'QL_SA_S') and contains(substring-after($text, 'QL_SA_S'), 'QL_SA_E')">
        <xsl:value-of select="substring-before($text, 'QL_SA_S')"/>
        <xsl:call-template name="attribute-text">
          <xsl:with-param name="text" select="substring-after(substring-after($text, 'QL_SA_S'), 'QL_SA_E')"/>
        </xsl:call-template>
      </xsl:when>
      <xsl:otherwise><xsl:value-of select="$text"/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <xsl:template match="object">
    <object>
      <xsl:call-template name="common"/>
      <xsl:copy-of select="@data | @type | @width | @height | @name | @usemap | @tabindex | @classid | @codebase | @codetype |
                           @archive | @declare | @standby"/>
      <xsl:for-each select="param"><param><xsl:copy-of select="@name | @value | @valuetype | @type"/></param></xsl:for-each>
      <xsl:apply-templates select="desc | foreign"/>
    </object>
  </xsl:template>

  <!-- ===== Tables ===== -->

  <xsl:template match="table">
    <table>
      <xsl:call-template name="common"/>
      <xsl:if test="*[self::title or self::desc]">
        <caption>
          <xsl:if test="title">
            <span class="number">
              <xsl:call-template name="word"><xsl:with-param name="key" select="'table'"/></xsl:call-template>
              <xsl:text> </xsl:text>
              <xsl:value-of select="@page-number"/>
              <xsl:text>. </xsl:text>
            </span>
            <span class="title tablecap"><xsl:apply-templates select="title/node()"/></span>
          </xsl:if>
          <xsl:apply-templates select="desc"/>
        </caption>
      </xsl:if>
      <xsl:for-each select="tgroup">
        <xsl:apply-templates select="thead"/>
        <xsl:apply-templates select="tbody"/>
      </xsl:for-each>
    </table>
    <xsl:text>&#10;</xsl:text>
  </xsl:template>
  <xsl:template match="thead">
    <xsl:call-template name="block"><xsl:with-param name="name" select="'thead'"/></xsl:call-template>
  </xsl:template>
  <!-- HTML allows a thead only before the first tbody. -->
  <xsl:template match="tgroup[preceding-sibling::tgroup]/thead" priority="2">
    <xsl:call-template name="block"><xsl:with-param name="name" select="'tbody'"/></xsl:call-template>
  </xsl:template>
  <xsl:template match="tbody">
    <xsl:call-template name="block"><xsl:with-param name="name" select="'tbody'"/></xsl:call-template>
  </xsl:template>
  <xsl:template match="row | strow | sthead">
    <xsl:call-template name="block"><xsl:with-param name="name" select="'tr'"/></xsl:call-template>
  </xsl:template>

  <xsl:template match="entry">
    <xsl:variable name="head" select="boolean(ancestor::thead)"/>
    <xsl:variable name="columns" select="ancestor::tgroup[1]/colspec"/>
    <xsl:variable name="first" select="count($columns[@colname = current()/@namest]/preceding-sibling::colspec)"/>
    <xsl:variable name="last" select="count($columns[@colname = current()/@nameend]/preceding-sibling::colspec)"/>
    <xsl:element name="{substring('tdth', 1 + 2 * $head, 2)}">
      <xsl:call-template name="common">
        <xsl:with-param name="after">
          <xsl:if test="@align"><xsl:value-of select="concat('align-', @align, ' ')"/></xsl:if>
          <xsl:if test="@valign"><xsl:value-of select="concat('valign-', @valign)"/></xsl:if>
        </xsl:with-param>
      </xsl:call-template>
      <xsl:if test="$head"><xsl:attribute name="scope">col</xsl:attribute></xsl:if>
      <xsl:if test="@morerows &gt; 0"><xsl:attribute name="rowspan"><xsl:value-of select="@morerows + 1"/></xsl:attribute></xsl:if>
      <xsl:if test="@namest and @nameend and $last &gt; $first">
        <xsl:attribute name="colspan"><xsl:value-of select="$last - $first + 1"/></xsl:attribute>
      </xsl:if>
      <xsl:apply-templates/>
    </xsl:element>
  </xsl:template>

  <xsl:template match="simpletable">
    <xsl:call-template name="block"><xsl:with-param name="name" select="'table'"/></xsl:call-template>
  </xsl:template>
  <xsl:template match="stentry">
    <xsl:variable name="key" select="../../@keycol = 1 + count(preceding-sibling::*)"/>
    <xsl:variable name="head" select="parent::sthead or $key"/>
    <xsl:element name="{substring('tdth', 1 + 2 * $head, 2)}">
      <xsl:call-template name="common"/>
      <xsl:if test="$head">
        <xsl:attribute name="scope"><xsl:value-of select="substring('rowcol', 1 + 3 * boolean(parent::sthead), 3)"/></xsl:attribute>
      </xsl:if>
      <xsl:apply-templates/>
      <xsl:if test="@specentry and not(*)">
        <xsl:variable name="own">
          <xsl:call-template name="attribute-text"><xsl:with-param name="text" select="string()"/></xsl:call-template>
        </xsl:variable>
        <xsl:if test="normalize-space($own) = ''"><xsl:value-of select="@specentry"/></xsl:if>
      </xsl:if>
    </xsl:element>
  </xsl:template>

  <!-- A table of choices without a head gets one. -->
  <xsl:template match="simpletable[contains(@class, ' task/choicetable ')][not(sthead)]" priority="2">
    <table>
      <xsl:call-template name="common"/>
      <tr class="sthead chhead">
        <th class="stentry choptionhd" scope="col"><xsl:call-template name="word"><xsl:with-param name="key" select="'option'"/></xsl:call-template></th>
        <th class="stentry chdeschd" scope="col"><xsl:call-template name="word"><xsl:with-param name="key" select="'description'"/></xsl:call-template></th>
      </tr>
      <xsl:apply-templates/>
    </table>
    <xsl:text>&#10;</xsl:text>
  </xsl:template>

  <!-- A row of a properties table may omit cells that other rows have. -->
  <xsl:template match="simpletable[contains(@class, ' reference/properties ')]" priority="2">
    <table>
      <xsl:call-template name="common"/>
      <xsl:apply-templates select="*">
        <xsl:with-param name="types" select="boolean(*/*[contains(@class, ' reference/proptype')])"/>
        <xsl:with-param name="values" select="boolean(*/*[contains(@class, ' reference/propvalue')])"/>
        <xsl:with-param name="descriptions" select="boolean(*/*[contains(@class, ' reference/propdesc')])"/>
      </xsl:apply-templates>
    </table>
    <xsl:text>&#10;</xsl:text>
  </xsl:template>
  <xsl:template match="strow[contains(@class, ' reference/property ')] | sthead[contains(@class, ' reference/prophead ')]" priority="2">
    <xsl:param name="types"/>
    <xsl:param name="values"/>
    <xsl:param name="descriptions"/>
    <tr>
      <xsl:call-template name="common"/>
      <xsl:if test="$types">
        <xsl:call-template name="property-cell"><xsl:with-param name="cell" select="*[contains(@class, ' reference/proptype')]"/></xsl:call-template>
      </xsl:if>
      <xsl:if test="$values">
        <xsl:call-template name="property-cell"><xsl:with-param name="cell" select="*[contains(@class, ' reference/propvalue')]"/></xsl:call-template>
      </xsl:if>
      <xsl:if test="$descriptions">
        <xsl:call-template name="property-cell"><xsl:with-param name="cell" select="*[contains(@class, ' reference/propdesc')]"/></xsl:call-template>
      </xsl:if>
    </tr>
    <xsl:text>&#10;</xsl:text>
  </xsl:template>
  <xsl:template name="property-cell">
    <xsl:param name="cell"/>
    <xsl:apply-templates select="$cell"/>
    <xsl:if test="not($cell)"><td class="stentry"></td></xsl:if>
  </xsl:template>

  <!-- ===== Inline ===== -->

  <xsl:template match="ph | keyword | term | text | boolean | state">
    <xsl:call-template name="inline"/>
  </xsl:template>
  <xsl:template match="ph[contains(@class, ' hi-d/b ')]" priority="2">
    <xsl:call-template name="inline"><xsl:with-param name="name" select="'strong'"/></xsl:call-template>
  </xsl:template>
  <xsl:template match="ph[contains(@class, ' hi-d/i ')]" priority="2">
    <xsl:call-template name="inline"><xsl:with-param name="name" select="'em'"/></xsl:call-template>
  </xsl:template>
  <xsl:template match="ph[contains(@class, ' hi-d/u ')]" priority="2">
    <xsl:call-template name="inline"><xsl:with-param name="name" select="'u'"/></xsl:call-template>
  </xsl:template>
  <xsl:template match="ph[contains(@class, ' hi-d/tt ')]" priority="2">
    <xsl:call-template name="inline"><xsl:with-param name="name" select="'span'"/></xsl:call-template>
  </xsl:template>
  <xsl:template match="ph[contains(@class, ' hi-d/sup ')]" priority="2">
    <xsl:call-template name="inline"><xsl:with-param name="name" select="'sup'"/></xsl:call-template>
  </xsl:template>
  <xsl:template match="ph[contains(@class, ' hi-d/sub ')]" priority="2">
    <xsl:call-template name="inline"><xsl:with-param name="name" select="'sub'"/></xsl:call-template>
  </xsl:template>
  <xsl:template match="ph[contains(@class, ' pr-d/codeph ')]" priority="2">
    <xsl:call-template name="inline"><xsl:with-param name="name" select="'code'"/></xsl:call-template>
  </xsl:template>
  <xsl:template match="ph[contains(@class, ' sw-d/userinput ')]" priority="2">
    <xsl:call-template name="inline"><xsl:with-param name="name" select="'kbd'"/></xsl:call-template>
  </xsl:template>
  <xsl:template match="ph[contains(@class, ' sw-d/systemoutput ')]" priority="2">
    <xsl:call-template name="inline"><xsl:with-param name="name" select="'samp'"/></xsl:call-template>
  </xsl:template>
  <xsl:template match="ph[contains(@class, ' pr-d/var ')] | keyword[contains(@class, ' sw-d/varname ')]" priority="2">
    <xsl:call-template name="inline"><xsl:with-param name="name" select="'var'"/></xsl:call-template>
  </xsl:template>
  <xsl:template match="tm">
    <xsl:call-template name="inline"/>
    <xsl:choose>
      <xsl:when test="@tmtype = 'tm'">&#8482;</xsl:when>
      <xsl:when test="@tmtype = 'reg'">&#174;</xsl:when>
      <xsl:when test="@tmtype = 'service'">&#8480;</xsl:when>
    </xsl:choose>
  </xsl:template>
  <xsl:template match="cite">
    <xsl:call-template name="inline"><xsl:with-param name="name" select="'cite'"/></xsl:call-template>
  </xsl:template>
  <xsl:template match="q">
    <xsl:call-template name="inline"><xsl:with-param name="name" select="'q'"/></xsl:call-template>
  </xsl:template>
  <xsl:template match="ph[contains(@class, ' ui-d/menucascade ')]" priority="2">
    <span>
      <xsl:call-template name="common"/>
      <xsl:for-each select="*[contains(@class, ' ui-d/uicontrol ')]">
        <xsl:if test="position() &gt; 1"><xsl:text> &gt; </xsl:text></xsl:if>
        <xsl:apply-templates select="."/>
      </xsl:for-each>
      <!-- Encoding replaces the controls with marker text; there are then no elements, only text. -->
      <xsl:if test="not(*)"><xsl:apply-templates/></xsl:if>
    </span>
  </xsl:template>

  <!-- A footnote with an id is shown where an xref leads to it. -->
  <xsl:template match="fn[@id]" priority="2"/>
  <xsl:template match="fn">
    <sup><a class="fnref" href="#fn{@page-number}" id="fnref{@page-number}"><xsl:call-template name="callout"/></a></sup>
  </xsl:template>
  <xsl:template name="callout">
    <xsl:choose>
      <xsl:when test="@callout"><xsl:value-of select="@callout"/></xsl:when>
      <xsl:otherwise><xsl:value-of select="@page-number"/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>
  <xsl:template name="footnotes">
    <xsl:for-each select="(body | abstract)//fn">
      <div class="fn" id="fn{@page-number}">
        <xsl:choose>
          <xsl:when test="@id">
            <xsl:attribute name="id"><xsl:call-template name="anchor"/></xsl:attribute>
            <sup><xsl:call-template name="callout"/></sup>
          </xsl:when>
          <xsl:otherwise>
            <a href="#fnref{@page-number}"><sup><xsl:call-template name="callout"/></sup></a>
          </xsl:otherwise>
        </xsl:choose>
        <xsl:text> </xsl:text>
        <xsl:variable name="blocks" select="p | pre | ul | sl | ol | lq | dl | note | lines | fig"/>
        <xsl:element name="{substring('spandiv', 1 + 4 * boolean($blocks), 4)}"><xsl:apply-templates/></xsl:element>
      </div>
    </xsl:for-each>
  </xsl:template>

  <!-- ===== Links ===== -->

  <xsl:template match="xref">
    <xsl:choose>
      <xsl:when test="@href">
        <a href="{@href}">
          <xsl:call-template name="common"/>
          <xsl:if test="desc">
            <xsl:attribute name="title">
              <xsl:call-template name="attribute-text"><xsl:with-param name="text" select="normalize-space(desc)"/></xsl:call-template>
            </xsl:attribute>
          </xsl:if>
          <xsl:call-template name="link-content"/>
        </a>
      </xsl:when>
      <xsl:otherwise><xsl:call-template name="inline"/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>
  <xsl:template name="link-content">
    <xsl:variable name="content" select="node()[not(self::desc)]"/>
    <xsl:choose>
      <xsl:when test="$content[self::* or normalize-space() != '']"><xsl:apply-templates select="$content"/></xsl:when>
      <xsl:when test="@page-title-type = 'footnote'"><sup><xsl:value-of select="@page-title"/></sup></xsl:when>
      <xsl:otherwise><xsl:call-template name="link-text"/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>
  <!-- The text for a link that has none of its own. -->
  <xsl:template name="link-text">
    <xsl:if test="@page-title-type = 'figure' or @page-title-type = 'table'">
      <xsl:call-template name="word"><xsl:with-param name="key" select="@page-title-type"/></xsl:call-template>
      <xsl:text> </xsl:text>
    </xsl:if>
    <xsl:value-of select="@page-title"/>
    <xsl:if test="not(@page-title)"><xsl:value-of select="@href"/></xsl:if>
  </xsl:template>

  <xsl:template match="related-links">
    <xsl:variable name="links" select=".//link[@href]"/>
    <xsl:if test="$links">
      <div>
        <xsl:call-template name="common"/>
        <xsl:if test="$links[@role = 'child']">
          <ul class="ullinks"><xsl:apply-templates select="$links[@role = 'child']"/></ul>
        </xsl:if>
        <xsl:for-each select="$links[@role = 'parent']">
          <div class="parentlink">
            <strong>
              <xsl:call-template name="word"><xsl:with-param name="key" select="'parent'"/></xsl:call-template>
              <xsl:text>:</xsl:text>
            </strong>
            <xsl:text> </xsl:text>
            <xsl:call-template name="link"/>
          </div>
        </xsl:for-each>
        <xsl:for-each select="$links[@role = 'previous' or @role = 'next']">
          <div class="{@role}link">
            <strong>
              <xsl:call-template name="word"><xsl:with-param name="key" select="@role"/></xsl:call-template>
              <xsl:text>:</xsl:text>
            </strong>
            <xsl:text> </xsl:text>
            <xsl:call-template name="link"/>
          </div>
        </xsl:for-each>
        <xsl:apply-templates select="linklist[.//link[@href]] | linkpool//linklist[not(ancestor::linklist)][.//link[@href]]"/>
        <xsl:variable name="others" select="$links[not(ancestor::linklist) and not(@role = 'child' or @role = 'parent' or
                                                   @role = 'previous' or @role = 'next')]"/>
        <xsl:if test="$others">
          <div class="linklist">
            <strong><xsl:call-template name="word"><xsl:with-param name="key" select="'related'"/></xsl:call-template></strong>
            <ul class="ullinks"><xsl:apply-templates select="$others"/></ul>
          </div>
        </xsl:if>
      </div>
    </xsl:if>
  </xsl:template>
  <!-- A list of links with a title of its own. -->
  <xsl:template match="linklist">
    <div>
      <xsl:call-template name="common"/>
      <xsl:if test="title"><strong class="title"><xsl:apply-templates select="title/node()"/></strong></xsl:if>
      <xsl:if test="desc"><div class="desc"><xsl:apply-templates select="desc/node()"/></div></xsl:if>
      <ul class="ullinks"><xsl:apply-templates select="link[@href] | linkpool/link[@href]"/></ul>
      <xsl:apply-templates select="linklist[.//link[@href]]"/>
      <xsl:if test="linkinfo"><div class="linkinfo"><xsl:apply-templates select="linkinfo/node()"/></div></xsl:if>
    </div>
  </xsl:template>
  <xsl:template match="link">
    <li class="link">
      <xsl:call-template name="link"/>
      <xsl:if test="desc">
        <div class="desc"><xsl:apply-templates select="desc/node()"/></div>
      </xsl:if>
    </li>
  </xsl:template>
  <xsl:template name="link">
    <a class="link" href="{@href}">
      <xsl:choose>
        <xsl:when test="linktext/node()"><xsl:apply-templates select="linktext/node()"/></xsl:when>
        <xsl:otherwise><xsl:call-template name="link-text"/></xsl:otherwise>
      </xsl:choose>
    </a>
  </xsl:template>

  <!-- ===== Generated words ===== -->

  <!-- Each "|key=word|". Words in elements would have to be read with document(''), which parses this file for each page. -->
  <xsl:variable name="english" select="'
    |figure=Figure| |table=Table| |option=Option| |description=Description| |parent=Parent topic| |related=Related information| |previous=Previous topic|
    |next=Next topic| |note=Note| |tip=Tip| |fastpath=Fastpath| |important=Important| |remember=Remember|
    |restriction=Restriction| |attention=Attention| |caution=Caution| |danger=Danger| |warning=Warning| |notice=Notice|
    |trouble=Trouble| |contents=Contents| |skip=Skip to the content| |place=You are here| |home=Home|
    |pager=Previous and next page| |previous-page=Previous| |next-page=Next| |all=All topics|'"/>
  <xsl:variable name="german" select="'
    |figure=Abbildung| |table=Tabelle| |option=Option| |description=Beschreibung| |parent=Übergeordnetes Thema| |related=Zugehörige Informationen|
    |previous=Vorheriges Thema| |next=Nächstes Thema| |note=Anmerkung| |tip=Tipp| |fastpath=Direktaufruf|
    |important=Wichtig| |remember=Hinweis| |restriction=Einschränkung| |attention=Achtung| |caution=Vorsicht|
    |danger=Gefahr| |warning=Warnung| |notice=Hinweis| |trouble=Fehlerbehebung| |contents=Inhalt|
    |skip=Zum Inhalt der Seite| |place=Sie sind hier| |home=Start| |pager=Vorige und nächste Seite| |previous-page=Zurück|
    |next-page=Weiter| |all=Alle Themen|'"/>

  <!-- A type of note that is not among the words is its own word. -->
  <xsl:template name="word">
    <xsl:param name="key"/>
    <xsl:variable name="entry" select="concat('|', $key, '=')"/>
    <xsl:variable name="own-language" select="ancestor-or-self::*[@xml:lang][1]/@xml:lang"/>
    <xsl:variable name="language-here">
      <xsl:value-of select="$own-language"/>
      <xsl:if test="not($own-language)"><xsl:value-of select="$page-language"/></xsl:if>
    </xsl:variable>
    <xsl:choose>
      <xsl:when test="starts-with($language-here, 'de') and contains($german, $entry)">
        <xsl:value-of select="substring-before(substring-after($german, $entry), '|')"/>
      </xsl:when>
      <xsl:when test="contains($english, $entry)"><xsl:value-of select="substring-before(substring-after($english, $entry), '|')"/></xsl:when>
      <xsl:otherwise><xsl:value-of select="$key"/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>
</xsl:stylesheet>
